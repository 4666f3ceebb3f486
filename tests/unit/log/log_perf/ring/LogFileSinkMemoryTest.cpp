// The sink runs out of memory at any of its allocations.
#include "log_perf/ring/LogFileSink.h"

#include "AllocationFault.h"
#include "RingFileFixture.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <filesystem>
#include <functional>
#include <new>
#include <stdexcept>
#include <string>

namespace vqrx::test {
namespace {

using log::log_perf::v2::LogFileSink;

// Longer than what a string holds without an allocation.
const std::string kLong(300, 'x');

/// Writes one record, at first without memory for its first allocation, then for its second, ...,
/// until it has all it needs.
class RingFileMemory : public RingFile {
protected:
    /// @param prepare  makes the file before each round
    /// @param look     looks at the file and the sink after each round, when a further record was
    ///                 written with all memory
    void WriteWithEachFault(const std::function<void()>& prepare,
                            const std::function<void(LogFileSink&)>& look)
    {
        bool happened = true;
        for (std::size_t succeeding = 0; happened; ++succeeding) {
            SCOPED_TRACE(succeeding);
            prepare();
            thrown_.clear();
            LogFileSink sink;
            sink.SetFileName(name_);
            {
                const AllocationFault fault(succeeding);
                Note([&] { Write(sink, 2, kLong); });
                happened = fault.Happened();
            }
            Note([&] { Write(sink, 2, "after"); });
            look(sink);
        }
    }

    template <typename Call>
    void Note(const Call& call)
    {
        try {
            call();
        } catch (const std::bad_alloc&) {
            thrown_ += "memory ";
        } catch (const std::invalid_argument&) {
            thrown_ += "damaged ";
        }
    }

    std::string thrown_;
};

} // namespace

TEST_F(RingFileMemory, A_record_without_memory_repeats_no_number)
{
    WriteWithEachFault(
        [&] {
            std::filesystem::remove(name_);
            LogFileSink sink;
            sink.SetFileName(name_);
            Write(sink, 2, "before");
        },
        [&](LogFileSink&) {
            const std::string with = Line(0, 2, "before") + Line(1, 2, kLong) + Line(2, 2, "after");
            const std::string without = Line(0, 2, "before") + Line(1, 2, "after");
            const std::string records = Bytes().substr(12);
            EXPECT_TRUE(records == with || records == without) << records;
        });
}

// The file ends with a line without an end.
TEST_F(RingFileMemory, A_torn_line_is_ended_although_memory_runs_out)
{
    const std::string torn = "0;Sun Nov 16 03";
    WriteWithEachFault([&] { Put("0x0000001B\r\n" + torn); },
                       [&](LogFileSink&) {
                           EXPECT_TRUE(Bytes().substr(12).starts_with(torn + "\r\n0;")) << Bytes();
                       });
}

TEST_F(RingFileMemory, A_damaged_file_is_reported_although_memory_runs_out)
{
    const std::string damaged = "0x0000001F\r\n0;date;x;2;damaged\r\n";
    WriteWithEachFault(
        [&] {
            std::filesystem::remove(name_ + ".damaged");
            Put(damaged);
        },
        [&](LogFileSink&) {
            EXPECT_NE(std::string::npos, thrown_.find("damaged ")) << thrown_;
            EXPECT_EQ(damaged, FileContent(name_ + ".damaged"));
            EXPECT_NE(std::string::npos, Bytes().find(";after\r\n"));
        });
}

} // namespace vqrx::test
