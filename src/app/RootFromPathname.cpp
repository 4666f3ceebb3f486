#include "RootFromPathname.h"

namespace vqrx::app::v0 {

std::string RootFromPathname(const std::string& pathname)
{
    return pathname.substr(0, pathname.find("\\App"));
}

} // namespace vqrx::app::v0
