// Fuzzer for the files that operators give to daemonctl: lists of expected programs, and listings.
// Any bytes are read to their end. A program that was read stays the same after it is written and
// read again.
#include "Check.h"
#include "DaemonListing.h"
#include "ExitReason.h"
#include "ExpectFile.h"
#include "ProcessMatch.h"

#include <cstdint>
#include <stdexcept>
#include <string>

namespace vqrx::test {
namespace {

using namespace client::v0;

void CheckProgram(const ExpectedProgram& program)
{
    FUZZ_CHECK(!program.program.empty());
    const ExpectFile again = ParseExpectFile(TextOf(program));
    FUZZ_CHECK(again.errors.empty());
    FUZZ_CHECK(again.programs.size() == 1);
    FUZZ_CHECK(again.programs[0].program == program.program);
    FUZZ_CHECK(again.programs[0].arguments == program.arguments);
    std::string command = program.program + " ";
    for (const std::string& argument : program.arguments) {
        command += argument + " ";
    }
    FUZZ_CHECK(IsCommandOf(program, command));
    FUZZ_CHECK(Assign({program}, {command})[0] == 0U);
}

} // namespace
} // namespace vqrx::test

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    using namespace vqrx::test;
    const std::string input(data, data + size);
    for (const ExpectedProgram& program : ParseExpectFile(input).programs) {
        CheckProgram(program);
    }
    try {
        for (const ListedProcess& process : ParseListing(input)) {
            FUZZ_CHECK(!WithoutBlank(process.command + " ").empty() || process.command.empty());
        }
    } catch (
        const std::runtime_error&) { // NOLINT(bugprone-empty-catch): the input is not a listing
    }
    const std::size_t half = input.size() / 2;
    static_cast<void>(
        IsImageOfCommand(input.substr(0, half), input.substr(half), R"(C:\FW\App)",
                         [](const std::string&, const std::string&) { return false; }));
    static_cast<void>(ReadableReason(input));
    return 0;
}
