#include "ThreeStarts.h"

#include "LogBytes.h"
#include "LogFile.h"
#include "log_perf/ring/LogFileSink.h"
#include "log_perf/time/DateText.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <map>
#include <unordered_set>
#include <utility>

namespace vqrx::test {
namespace {

using Texts = std::unordered_set<std::string>;

constexpr std::size_t kShown = 9000;   // bytes of an image that fails
constexpr std::size_t kShownText = 20; // bytes of a record that is missing

std::string TextOf(const std::string& line)
{
    std::size_t begin = 0;
    for (int field = 0; field < 4; ++field) {
        begin = line.find(';', begin) + 1;
    }
    return line.substr(begin, line.size() - begin - 2);
}

// Returns where the next record goes. A position beyond the end counts as the front of the ring.
std::size_t WritePosition(const std::string& bytes)
{
    const std::size_t position = bytes.starts_with("0x") ? std::stoul(bytes, nullptr, 16) : 0;
    return position <= bytes.size() ? position : 0;
}

// Returns the texts that were not found.
std::vector<std::string> Missing(const std::vector<std::string>& texts, const Texts& found)
{
    std::vector<std::string> missing;
    std::ranges::copy_if(texts, std::back_inserter(missing),
                         [&](const std::string& text) { return !found.contains(text); });
    return missing;
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
    Whole whole = WholeRecords(bytes);
    for (int start = 1; start <= 3 && !testing::Test::HasFailure(); ++start) {
        const std::string text = "after " + std::to_string(start);
        Start(text, kPowerReturns + start, limit, whole);
        bytes = ContentOf(name_);
        whole = WholeRecords(bytes);
        EXPECT_TRUE(!whole.texts.empty() && whole.texts.back() == text) << known_.back();
        ReadWithClient(text, whole);
    }
    if (testing::Test::HasFailure()) {
        ADD_FAILURE() << "image " << images_ << ":\n"
                      << image.substr(0, kShown) << "\nnow:\n"
                      << bytes.substr(0, kShown);
    }
}

ThreeStarts::Whole ThreeStarts::WholeRecords(const std::string& bytes) const
{
    const Lines lines = LinesOf(bytes);
    Whole whole;
    const std::size_t position = WritePosition(bytes);
    std::map<std::size_t, std::string> afterHead; // by offset
    for (const std::string& line : known_) {
        const auto found = lines.find(line);
        if (found == lines.end()) {
            continue;
        }
        whole.texts.push_back(TextOf(line));
        const auto offset = static_cast<std::size_t>(found->data() - bytes.data());
        if (offset >= position) {
            afterHead[offset] = whole.texts.back();
        }
    }
    for (const auto& [offset, text] : afterHead) {
        whole.afterHead.push_back(text);
    }
    return whole;
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
    known_.push_back(std::to_string(entries.back().first) + ";" +
                     log::log_perf::v2::DateText(timestamp) + ";" + std::to_string(seconds) +
                     "007;2;" + text + "\r\n");
    Texts found;
    for (const auto& [number, entry] : entries) {
        found.insert(entry.text);
    }
    for (const std::string& missing : Missing(whole.texts, found)) {
        ASSERT_TRUE(!whole.afterHead.empty() && missing == whole.afterHead[0])
            << text << " misses " << missing.substr(0, kShownText);
    }
}

void ThreeStarts::ReadWithClient(const std::string& text, const Whole& whole) const
{
    Texts found;
    static_cast<void>(client::v0::ReadLogFile(
        name_, client::v0::TextEncoding::kUtf8,
        [&](client::v0::Record record) { found.insert(std::move(record.text)); }));
    ASSERT_TRUE(found.contains(text)) << text;
    const std::vector<std::string> missing = Missing(whole.texts, found);
    ASSERT_GE(2U, missing.size()) << "daemonctl at " << text;
    for (const std::string& name : missing) {
        ASSERT_TRUE(std::ranges::count(whole.afterHead, name))
            << "daemonctl misses " << name.substr(0, kShownText) << " at " << text;
    }
}

} // namespace vqrx::test
