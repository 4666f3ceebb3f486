#include "DecimalNumber.h"

#include <algorithm>

namespace vqrx::client::v0 {
namespace {

bool IsDigit(char character)
{
    return character >= '0' && character <= '9';
}

} // namespace

std::string ReadAsDecimal(std::string& text)
{
    if (text.empty() || !std::all_of(text.begin(), text.end(), IsDigit)) {
        return "not a decimal number: " + text;
    }
    text.erase(0, std::min(text.find_first_not_of('0'), text.size() - 1));
    return "";
}

} // namespace vqrx::client::v0
