#include "com/ComText.h"

#include "code_page/CodePage.h"
#include "exception_utils/AtlException.h"

#include <new>

namespace vqrx::system::com::v1 {
namespace {

// Runs a conversion and replaces its exceptions by the one that carries a result code.
template <typename Convert>
auto WithResultCode(Convert convert)
try {
    return convert();
} catch (const code_page::v1::CodePageError& exception) {
    ATL::ThrowWin32(exception.Error());
} catch (const std::bad_alloc&) {
    throw ATL::CAtlException(E_OUTOFMEMORY);
}

} // namespace

std::string TextFromCom(std::wstring_view text, UINT codePage)
{
    return WithResultCode([&] { return code_page::v1::WideToNarrow(text, codePage); });
}

std::wstring TextForCom(std::string_view text, UINT codePage)
{
    return WithResultCode([&] { return code_page::v1::NarrowToWide(text, codePage); });
}

} // namespace vqrx::system::com::v1
