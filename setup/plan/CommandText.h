#pragma once

#include <string>
#include <vector>

namespace vqrx::setup::v0 {

/// Makes the command line of a program that splits it as CommandLineToArgvW does. Quotation marks
/// and backslashes in an argument reach the program unchanged. Pure.
[[nodiscard]] std::string CommandText(const std::string& program,
                                      const std::vector<std::string>& arguments);

} // namespace vqrx::setup::v0
