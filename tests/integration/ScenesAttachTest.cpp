// Attach of ordinary programs.
#include "Scene.h"

#include "TempFolder.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

namespace vqrx::test {
namespace {

// Copies a test program to a path with blanks and returns the path.
std::string CopyOfChild(const TempFolder& folder)
{
    const std::filesystem::path tools = folder.Path() / "my tools";
    std::filesystem::create_directory(tools);
    const std::filesystem::path copy = tools / "child one.exe";
    std::filesystem::copy_file(TestProgram("writes_command_line"), copy);
    return copy.string();
}

std::string ImageOf(DWORD processId)
{
    const system::win32::v1::UniqueKernelHandle process(
        OpenProcess(PROCESS_QUERY_LIMITED_INFORMATION, FALSE, processId));
    char path[MAX_PATH] = {};
    DWORD size = MAX_PATH;
    QueryFullProcessImageNameA(process.Get(), 0, path, &size);
    return path;
}

class AttachScene : public Scene {
protected:
    /// Waits for the file with the command line, removes it and returns its text.
    std::string TakeNote() const
    {
        const std::string text = WaitForNote(note_);
        std::filesystem::remove(note_);
        return text;
    }

    const TempFolder folder_;
    const std::string program_ = CopyOfChild(folder_);
    const std::string note_ = folder_.File("its note");
};

TEST_F(AttachScene, A_killed_program_is_restarted_with_its_arguments_and_not_after_a_detach)
{
    const ChildProcess child("\"" + program_ + "\" \"" + note_ +
                             "\"   plain \"two words\" \"quoted\" last");
    ASSERT_NE(TakeNote(), "");
    const std::string command = program_ + " " + note_ + " plain two words quoted last ";

    const auto attached = supervisor_.Client().Attach(child.Pid());
    EXPECT_TRUE(attached.done);
    EXPECT_EQ(attached.daemonId, 0U);
    EXPECT_TRUE(supervisor_.WaitForLog(2, "Attach " + Described(0, child.Pid(), command)));
    EXPECT_EQ(HandlesOf(child.Pid()), 1U);

    child.Kill();
    const DWORD second = supervisor_.WaitForStart(0);
    ASSERT_NE(second, 0U);
    reaper_.Note(second);
    EXPECT_TRUE(supervisor_.WaitForLog(0, "Exception caught in : Unknown (0x9)"));
    EXPECT_TRUE(supervisor_.WaitForLog(1, "Start " + Described(0, second, command)));
    EXPECT_EQ(TakeNote(),
              "\"" + program_ + "\" \"" + note_ + "\" plain \"two words\" quoted last ");
    EXPECT_EQ(ImageOf(second), program_);

    EXPECT_TRUE(supervisor_.Client().Detach(0));
    EXPECT_TRUE(supervisor_.WaitForLog(1, "Detached " + Described(0, second, command)));
    EXPECT_TRUE(IsRunning(second));
    EXPECT_EQ(HandlesOf(second), 0U);
    EXPECT_FALSE(supervisor_.Client().Detach(0));

    KillProcess(second);
    ASSERT_TRUE(OnePassLater(supervisor_));
    EXPECT_EQ(supervisor_.CountLog(1, "Start " + Described(0, second, command)), 1U);
    EXPECT_EQ(supervisor_.WaitForStart(0), second); // no later start of this daemon
    EXPECT_FALSE(std::filesystem::exists(note_));
}

TEST_F(AttachScene, A_restart_loses_quotes_inside_an_argument_and_empty_arguments)
{
    const ChildProcess child("\"" + program_ + "\" \"" + note_ +
                             "\" \"say \\\"hi\\\" now\" a\\\"b \"\" last");
    ASSERT_NE(TakeNote(), "");
    ASSERT_TRUE(supervisor_.Client().Attach(child.Pid()).done);
    EXPECT_TRUE(supervisor_.WaitForLog(
        2, "Attach " +
               Described(0, child.Pid(), program_ + " " + note_ + " say \"hi\" now a\"b  last ")));
    child.Kill();
    const DWORD second = supervisor_.WaitForStart(0);
    reaper_.Note(second);
    EXPECT_EQ(TakeNote(), "\"" + program_ + "\" \"" + note_ + "\" \"say \"hi\" now\" a\"b  last ");
}

TEST_F(AttachScene, Attach_of_an_ordinary_program_ignores_the_arguments_of_the_request)
{
    const ChildProcess child("\"" + program_ + "\" \"" + note_ + "\" own");
    ASSERT_NE(TakeNote(), "");
    ASSERT_TRUE(supervisor_.Client().Attach(child.Pid(), {L"of", L"the request"}).done);
    child.Kill();
    reaper_.Note(supervisor_.WaitForStart(0));
    EXPECT_EQ(TakeNote(), "\"" + program_ + "\" \"" + note_ + "\" own ");
}

} // namespace
} // namespace vqrx::test
