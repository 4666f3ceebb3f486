#include "ImportPatch.h"
#include "thread/Thread.h"

#include <gtest/gtest.h>

#include <process.h>

#include <memory>

namespace vqrx::test {
namespace {

uintptr_t __cdecl RefuseThread(void*, unsigned, _beginthreadex_proc_type, void*, unsigned,
                               unsigned*)
{
    return 0;
}

} // namespace

TEST(Thread, A_thread_that_cannot_be_created_has_no_handle_and_frees_its_body)
{
    const auto captured = std::make_shared<int>(1);
    {
        const ImportPatch patch("_beginthreadex", RefuseThread);
        const system::thread::v1::Thread thread([captured] { FAIL(); });
        EXPECT_EQ(nullptr, thread.Handle());
    }
    EXPECT_EQ(1, captured.use_count());
}

} // namespace vqrx::test
