// Random hostile arguments: whatever the rules let pass reaches the program as it was given. The
// test goes the way of a launch: conversion to the code page, the supervisor's command line, and
// Windows' own splitter.
#include "CommandLine.h"
#include "daemon_manager/ArgumentRules.h"
#include "win32/LocalMemory.h"

#include <windows.h>

#include <shellapi.h>

#include <gtest/gtest.h>

#include <cstddef>
#include <random>
#include <string>
#include <vector>

namespace vqrx::test {
namespace {

using daemon_manager::ReasonToRefuse;
using system::daemon::daemon_mgr::v0::BuildCommandLine;
using system::win32::v1::UniqueLocalMemory;

using Words = std::vector<std::wstring>;

// Letters that do no harm, those that split or join arguments, those of the interpreter, and those
// that become a quote, a backslash or a question mark in a code page.
const std::wstring kLetters =
    L"abc-1  \\\\\"\"\t\n&|<>^%!()\u00FC\u00A0\uFF02\uFF3C\u2033\u201D\u4E2D\xD800";

std::wstring AnyText(std::mt19937& random)
{
    std::wstring text(std::uniform_int_distribution<std::size_t>(0, 6)(random), L' ');
    for (wchar_t& character : text) {
        character =
            kLetters[std::uniform_int_distribution<std::size_t>(0, kLetters.size() - 1)(random)];
    }
    return text;
}

std::string ToCodePage(const std::wstring& text)
{
    std::string narrow(text.size() * 4, '\0');
    narrow.resize(static_cast<std::size_t>(
        WideCharToMultiByte(CP_ACP, 0, text.data(), static_cast<int>(text.size()), narrow.data(),
                            static_cast<int>(narrow.size()), nullptr, nullptr)));
    return narrow;
}

std::wstring FromCodePage(const std::string& text)
{
    std::wstring wide(text.size(), L'\0');
    wide.resize(static_cast<std::size_t>(
        MultiByteToWideChar(CP_ACP, 0, text.data(), static_cast<int>(text.size()), wide.data(),
                            static_cast<int>(wide.size()))));
    return wide;
}

// Returns the arguments that a program gets that the supervisor starts.
Words Received(const std::wstring& path, const Words& arguments)
{
    std::vector<std::string> narrow;
    for (const std::wstring& argument : arguments) {
        narrow.push_back(ToCodePage(argument));
    }
    const std::wstring line = FromCodePage(BuildCommandLine(ToCodePage(path), narrow));
    int count = 0;
    wchar_t** const parts = CommandLineToArgvW(line.c_str(), &count);
    const UniqueLocalMemory<wchar_t*> owner(parts);
    return parts != nullptr ? Words(parts + 1, parts + count) : Words();
}

std::wstring Shown(const Words& words)
{
    std::wstring text;
    for (const std::wstring& word : words) {
        text += L"[" + word + L"]";
    }
    return text;
}

} // namespace

TEST(ArgumentRules, Random_arguments_that_pass_reach_the_program_as_they_are)
{
    std::mt19937 random(20261122);
    std::size_t passed = 0;
    for (int round = 0; round < 20000; ++round) {
        Words arguments(std::uniform_int_distribution<std::size_t>(1, 3)(random));
        for (std::wstring& argument : arguments) {
            argument = AnyText(random);
        }
        const std::wstring path = round % 2 == 0 ? L"C:\\FW\\a.exe" : L"C:\\my folder\\a.exe";
        if (ReasonToRefuse(path, arguments).empty()) {
            ++passed;
            ASSERT_EQ(Received(path, arguments), arguments) << ToCodePage(Shown(arguments));
        }
    }
    EXPECT_GT(passed, 1000U); // else the test shows nothing
}

TEST(ArgumentRules,
     Random_arguments_that_pass_for_a_batch_file_hold_nothing_that_the_interpreter_reads)
{
    std::mt19937 random(14);
    std::size_t passed = 0;
    for (int round = 0; round < 20000; ++round) {
        const Words arguments{AnyText(random)};
        if (ReasonToRefuse(L"C:\\FW\\start.cmd", arguments).empty()) {
            ++passed;
            const std::string narrow = ToCodePage(arguments.front());
            ASSERT_EQ(narrow.find_first_of("\"&|<>^%!()@,;=\r\n"), std::string::npos) << narrow;
        }
    }
    EXPECT_GT(passed, 1000U);
}

} // namespace vqrx::test
