#include "DecimalNumber.h"

#include <algorithm>
#include <string>

namespace vqrx::client::v0 {
namespace {

bool IsDigit(char character)
{
    return character >= '0' && character <= '9';
}

// @return the error text for the library; empty if text is a decimal number
std::string ReadAsDecimal(std::string& text)
{
    if (text.empty() || !std::all_of(text.begin(), text.end(), IsDigit)) {
        return "not a decimal number: " + text;
    }
    text.erase(0, std::min(text.find_first_not_of('0'), text.size() - 1));
    return "";
}

} // namespace

CLI::Validator DecimalNumber()
{
    return {ReadAsDecimal, "", "DECIMAL"};
}

} // namespace vqrx::client::v0
