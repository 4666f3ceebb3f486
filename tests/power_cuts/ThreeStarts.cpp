#include "ThreeStarts.h"

#include "LogBytes.h"
#include "LogFile.h"
#include "log_perf/ring/LogFileSink.h"
#include "log_perf/time/DateText.h"

#include <gtest/gtest.h>

#include <unordered_set>
#include <utility>

namespace vqrx::test {
namespace {

using Texts = std::unordered_set<std::string>;

constexpr std::size_t kShown = 9000; // bytes of an image that fails

std::string TextOf(const std::string& line)
{
    std::size_t begin = 0;
    for (int field = 0; field < 4; ++field) {
        begin = line.find(';', begin) + 1;
    }
    return line.substr(begin, line.size() - begin - 2);
}

std::string Missing(const std::vector<std::string>& whole, const Texts& found, std::size_t& count)
{
    std::string names;
    for (const std::string& text : whole) {
        if (!found.contains(text)) {
            names += text.substr(0, 20) + ' ';
            ++count;
        }
    }
    return names;
}

} // namespace

ThreeStarts::ThreeStarts(std::string name)
    : name_(std::move(name))
{
}

void ThreeStarts::On(const std::string& image, std::uint32_t limit,
                     const std::vector<std::string>& known)
{
    ++images_;
    known_ = known;
    Put(name_, image);
    std::string bytes = image;
    Whole whole = WholeTexts(bytes);
    for (int start = 1; start <= 3 && !testing::Test::HasFailure(); ++start) {
        const std::string text = "after " + std::to_string(start);
        Start(text, kPowerReturns + start, limit, whole);
        bytes = ContentOf(name_);
        whole = WholeTexts(bytes);
        EXPECT_TRUE(!whole.empty() && whole.back() == text) << known_.back();
        ReadWithClient(text, whole);
    }
    if (testing::Test::HasFailure()) {
        ADD_FAILURE() << "image " << images_ << ":\n"
                      << image.substr(0, kShown) << "\nnow:\n"
                      << bytes.substr(0, kShown);
    }
}

ThreeStarts::Whole ThreeStarts::WholeTexts(const std::string& bytes) const
{
    const Lines lines = LinesOf(bytes);
    Whole texts;
    for (const std::string& line : known_) {
        if (lines.contains(line)) {
            texts.push_back(TextOf(line));
        }
    }
    return texts;
}

void ThreeStarts::Start(const std::string& text, std::int64_t seconds, std::uint32_t limit,
                        const Whole& whole)
{
    const auto sink = NewSink(name_, limit);
    const auto timestamp = At(seconds);
    ASSERT_NO_THROW(sink->Write(2, &timestamp, text.c_str()));
    const auto entries = sink->GetEntries(0, INT64_MAX);
    ASSERT_FALSE(entries.empty());
    ASSERT_EQ(text, entries.back().second.text);
    ASSERT_EQ(entries.back().first - entries.front().first + 1,
              static_cast<std::int64_t>(entries.size()));
    known_.push_back(std::to_string(entries.back().first) + ";" +
                     log::log_perf::v2::DateText(timestamp) + ";" + std::to_string(seconds) +
                     "007;2;" + text + "\r\n");
    Texts found;
    for (const auto& [number, entry] : entries) {
        found.insert(entry.text);
    }
    std::size_t missing = 0;
    const std::string names = Missing(whole, found, missing);
    ASSERT_GE(1U, missing) << text << " misses " << names;
}

void ThreeStarts::ReadWithClient(const std::string& text, const Whole& whole) const
{
    Texts found;
    static_cast<void>(client::v0::ReadLogFile(
        name_, client::v0::TextEncoding::kUtf8,
        [&](client::v0::Record record) { found.insert(std::move(record.text)); }));
    ASSERT_TRUE(found.contains(text)) << text;
    std::size_t missing = 0;
    const std::string names = Missing(whole, found, missing);
    ASSERT_GE(2U, missing) << "daemonctl misses " << names << " at " << text;
}

} // namespace vqrx::test
