// Another program cuts the file while the sink has it open.
#include "log_perf/ring/LogFileSink.h"

#include "RingFileFixture.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <filesystem>
#include <string>

namespace vqrx::test {

using log::log_perf::v2::LogFileSink;

// The sink goes on at its position. The gap before it reads as NULs, and the first record after the
// gap shares a line with them: that record is lost.
TEST_F(RingFile, A_cut_of_the_open_file_at_any_byte_costs_one_record_after_it_and_no_start)
{
    constexpr std::size_t kStep = 3;
    std::size_t size = 1;
    for (std::size_t cut = 0; cut < size; cut += kStep) {
        std::filesystem::remove(name_);
        {
            LogFileSink sink;
            sink.SetFileName(name_);
            for (const char* text : {"a", "b;c;d;e;f;g", "h"}) {
                Write(sink, 2, text);
            }
            size = std::filesystem::file_size(name_);
            std::filesystem::resize_file(name_, cut);
            Write(sink, 2, "shares a line");
            Write(sink, 2, "after");
        }
        for (int start = 1; start <= 3; ++start) {
            LogFileSink sink;
            sink.SetFileName(name_);
            ASSERT_NO_THROW(Write(sink, 2, "start " + std::to_string(start))) << cut;
            const auto texts = History(sink);
            ASSERT_LT(static_cast<std::size_t>(start), texts.size()) << cut;
            const std::string& after = texts[texts.size() - 1 - static_cast<std::size_t>(start)];
            EXPECT_TRUE(after.ends_with(":after")) << cut << ' ' << after;
            EXPECT_TRUE(texts.back().ends_with(":start " + std::to_string(start))) << cut;
            EXPECT_FALSE(std::filesystem::exists(name_ + ".damaged")) << cut;
        }
    }
}

} // namespace vqrx::test
