#include "Snapshot.h"

#include "RingModel.h"
#include "RingScan.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>

namespace vqrx::test {
namespace {

using client::v0::ByteSource;
using client::v0::MemorySource;
using client::v0::ScanRing;
using client::v0::ScanSummary;
using client::v0::Snapshot;

/// A file that keeps the size that it had when it was opened, and that changes right after that.
class OpenedFile : public ByteSource {
public:
    OpenedFile(const std::string& bytes, const std::function<void()>& opened)
        : bytes_(bytes)
        , size_(bytes.size())
    {
        opened();
    }

    std::uint64_t Size() const noexcept override { return size_; }

    std::size_t ReadAt(std::uint64_t offset, std::span<char> buffer) override
    {
        return MemorySource(bytes_).ReadAt(offset, buffer);
    }

private:
    const std::string& bytes_;
    std::uint64_t size_;
};

ScanSummary SummaryOf(const std::string& bytes)
{
    MemorySource source(bytes);
    return ScanRing(source, [](const auto&) {});
}

TEST(Snapshot, of_a_growing_file_is_read_again_until_header_and_file_match)
{
    RingModel ring;
    ring.Write("first");
    int openings = 0;
    const std::optional<std::string> bytes = Snapshot([&] {
        return std::make_unique<OpenedFile>(ring.Bytes(), [&] {
            if (++openings < 4) {
                ring.Write("added");
            }
        });
    });
    ASSERT_TRUE(bytes);
    EXPECT_EQ(*bytes, ring.Bytes());
    EXPECT_FALSE(SummaryOf(*bytes).headerDamaged);
    EXPECT_EQ(SummaryOf(*bytes).records, 4U);
    EXPECT_EQ(openings, 4);
}

TEST(Snapshot, of_a_cut_file_is_returned_after_two_reads)
{
    RingModel ring;
    ring.Write("first");
    ring.Write("second");
    const std::string cut = ring.Bytes().substr(0, ring.Bytes().size() - 10);
    int openings = 0;
    const std::optional<std::string> bytes =
        Snapshot([&] { return std::make_unique<OpenedFile>(cut, [&] { ++openings; }); });
    EXPECT_EQ(bytes, cut);
    EXPECT_TRUE(SummaryOf(cut).headerDamaged);
    EXPECT_EQ(openings, 2);
}

TEST(Snapshot, of_a_file_that_never_stops_growing_is_returned_after_100_reads)
{
    RingModel ring;
    int openings = 0;
    const std::optional<std::string> bytes = Snapshot([&] {
        return std::make_unique<OpenedFile>(ring.Bytes(), [&] {
            ++openings;
            ring.Write("added");
        });
    });
    EXPECT_TRUE(bytes);
    EXPECT_EQ(openings, 101);
}

} // namespace
} // namespace vqrx::test
