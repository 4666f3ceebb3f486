// Another program has locked bytes of the log file. A lock needs only the right to read the file,
// and Windows then refuses every other program these bytes. Wine does not, so the test refuses
// them.
#include "log_perf/ring/LogFileSink.h"

#include "ImportPatch.h"
#include "RingFileFixture.h"

#include <gtest/gtest.h>

#include <io.h>

#include <cerrno>
#include <cstdint>
#include <string>

namespace vqrx::test {
namespace {

using log::log_perf::v2::LogFileSink;

using ReadFunction = int __cdecl(int, void*, unsigned);
using WriteFunction = int __cdecl(int, const void*, unsigned);
ReadFunction* unlockedRead = nullptr;
WriteFunction* unlockedWrite = nullptr;
std::int64_t lockedFrom = 0;
std::int64_t lockedTo = 0;
std::int64_t lockedToAfterEnd =
    0; // lockedTo after a program has read a file to its end; 0: as before

bool IsRefused(int file, unsigned bytes)
{
    const std::int64_t position = _telli64(file);
    if (position >= lockedTo || position + bytes <= lockedFrom) {
        return false;
    }
    errno = EACCES; // as msvcrt reports ERROR_LOCK_VIOLATION
    return true;
}

int __cdecl ReadUnlessLocked(int file, void* buffer, unsigned bytes)
{
    if (IsRefused(file, bytes)) {
        return -1;
    }
    const int count = unlockedRead(file, buffer, bytes);
    if (count == 0 && lockedToAfterEnd != 0) {
        lockedTo = lockedToAfterEnd;
    }
    return count;
}

int __cdecl WriteUnlessLocked(int file, const void* buffer, unsigned bytes)
{
    return IsRefused(file, bytes) ? -1 : unlockedWrite(file, buffer, bytes);
}

// A lock of another program on some bytes of every file, until the destructor runs.
class LockedBytes {
public:
    LockedBytes(std::int64_t from, std::int64_t to)
    {
        lockedFrom = from;
        lockedTo = to;
    }
    // A lock that begins after the file was read to its end.
    static LockedBytes AfterEnd(std::int64_t from, std::int64_t to)
    {
        lockedToAfterEnd = to;
        return {from, 0};
    }
    LockedBytes(const LockedBytes&) = delete;
    LockedBytes& operator=(const LockedBytes&) = delete;
    ~LockedBytes()
    {
        lockedFrom = 0;
        lockedTo = 0;
        lockedToAfterEnd = 0;
    }

private:
    const ImportPatch read_{"_read", ReadUnlessLocked, unlockedRead};
    const ImportPatch write_{"_write", WriteUnlessLocked, unlockedWrite};
};

class LockedRing : public RingFile {
protected:
    LockedRing() { sink_.SetFileName(name_); }

    LogFileSink sink_;
};

TEST_F(LockedRing, A_lock_on_the_header_does_not_let_records_overwrite_the_front_of_the_file)
{
    Write(sink_, 2, "a");
    Write(sink_, 2, "b");
    const std::string before = Bytes();
    {
        const LockedBytes lock(0, 12);
        Write(sink_, 2, "c");
        Write(sink_, 2, "d");
        Write(sink_, 2, "e");
    }
    EXPECT_EQ(before + Line(2, 2, "c"), Bytes()); // c was written before its header was refused
    Write(sink_, 2, "f");
    EXPECT_EQ(before.substr(12) + Line(2, 2, "f"), Bytes().substr(12)); // in the place of c
    EXPECT_EQ(Bytes().size(), std::stoul(Bytes().substr(0, 10), nullptr, 16));
    EXPECT_EQ((std::vector<std::string>{"0:a", "1:b", "2:f"}), History(sink_));
}

TEST_F(LockedRing, A_header_that_is_locked_at_the_start_is_tried_again_and_nothing_is_overwritten)
{
    const std::string records = Line(0, 2, "a") + Line(1, 2, "b");
    Put("0x00000066\r\n" + records);
    ASSERT_EQ(0x66U, Bytes().size());
    {
        const LockedBytes lock(0, 12);
        Write(sink_, 2, "c");
        Write(sink_, 2, "d");
    }
    EXPECT_EQ("0x00000066\r\n" + records, Bytes());
    EXPECT_EQ((std::vector<std::string>{"0:c", "1:d"}), History(sink_));
    Write(sink_, 2, "e");
    EXPECT_EQ(records + Line(2, 2, "e"), Bytes().substr(12));
    EXPECT_EQ((std::vector<std::string>{"0:a", "1:b", "2:e"}), History(sink_));
}

TEST_F(LockedRing, A_lock_on_records_does_not_restart_the_numbers)
{
    const std::string records = Line(0, 2, "a") + Line(1, 2, "b");
    Put("0x00000066\r\n" + records);
    {
        const LockedBytes lock(0x30, 0x40);
        Write(sink_, 2, "c");
    }
    EXPECT_EQ("0x00000066\r\n" + records, Bytes());
    Write(sink_, 2, "d");
    EXPECT_EQ(records + Line(2, 2, "d"), Bytes().substr(12));
    EXPECT_EQ((std::vector<std::string>{"0:a", "1:b", "2:d"}), History(sink_));
}

TEST_F(LockedRing, A_lock_that_begins_while_the_file_is_read_does_not_restart_the_numbers)
{
    const std::string records = Line(0, 2, "a") + Line(1, 2, "b");
    Put("0x00000066\r\n" + records);
    {
        const LockedBytes lock = LockedBytes::AfterEnd(0x30, 0x40);
        Write(sink_, 2, "c");
    }
    EXPECT_EQ("0x00000066\r\n" + records, Bytes());
    Write(sink_, 2, "d");
    EXPECT_EQ(records + Line(2, 2, "d"), Bytes().substr(12));
    EXPECT_EQ((std::vector<std::string>{"0:a", "1:b", "2:d"}), History(sink_));
}

// The records after the write position are older. The number of the first one numbers all others.
TEST_F(LockedRing, A_lock_on_older_records_that_begins_while_the_file_is_read_changes_no_number)
{
    const std::string records = Line(7, 2, "c") + Line(5, 2, "a") + Line(6, 2, "b");
    const auto older = static_cast<std::int64_t>(12 + Line(7, 2, "c").size());
    Put("0x00000039\r\n" + records);
    ASSERT_EQ(0x39, older);
    {
        const LockedBytes lock = LockedBytes::AfterEnd(older, older + 1);
        Write(sink_, 2, "d");
    }
    EXPECT_EQ("0x00000039\r\n" + records, Bytes());
    Write(sink_, 2, "e");
    EXPECT_EQ(Line(7, 2, "c") + Line(7, 2, "e") + Line(6, 2, "b"), Bytes().substr(12));
    EXPECT_EQ((std::vector<std::string>{"5:b", "6:c", "7:e"}), History(sink_));
}

} // namespace
} // namespace vqrx::test
