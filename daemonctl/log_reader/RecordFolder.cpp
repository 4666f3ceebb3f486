#include "RecordFolder.h"

#include "RecordFileName.h"
#include "RecordLine.h"
#include "WholeFile.h"

#include <algorithm>
#include <filesystem>
#include <iterator>
#include <stdexcept>
#include <system_error>

namespace vqrx::client::v0 {
namespace {

namespace fs = std::filesystem;

constexpr std::string_view kRemark = "# ";
constexpr std::size_t kMostInRing = 32768; // records: a ring has 1.1 MiB, a line 35 bytes or more

fs::path PathOf(const std::string& utf8)
{
    return {std::u8string(utf8.begin(), utf8.end())};
}

fs::path PathIn(const std::string& folder, const std::string& name)
{
    return PathOf(folder) / PathOf(name);
}

// Returns the names of the files in the order of their numbers.
std::vector<std::string> NamesIn(const std::string& folder)
{
    std::error_code error;
    std::vector<std::string> names;
    fs::directory_iterator entry(PathOf(folder), error);
    for (; !error && entry != fs::directory_iterator(); entry.increment(error)) {
        const std::u8string name = entry->path().filename().u8string();
        if (NumberOfRecordFile(std::string(name.begin(), name.end()))) {
            names.emplace_back(name.begin(), name.end());
        }
    }
    if (error) {
        throw std::runtime_error(folder + " cannot be read: " + error.message());
    }
    std::sort(names.begin(), names.end(), [](const std::string& left, const std::string& right) {
        return NumberOfRecordFile(left) < NumberOfRecordFile(right);
    });
    return names;
}

// Returns an empty text if the file is gone: a recorder removes the oldest files.
std::string ReadUnlessRemoved(const fs::path& path)
{
    try {
        return ReadWholeFile(path);
    } catch (const std::runtime_error&) {
        std::error_code error;
        if (fs::exists(path, error) || error) {
            throw;
        }
        return {};
    }
}

// Calls take with each line that has an end, and the offset after that end.
// @return the bytes without a line end, at the end of the content
template <typename Take>
std::string_view EachLine(std::string_view content, const Take& take)
{
    std::size_t begin = 0;
    for (std::size_t end = content.find('\n'); end != std::string_view::npos;
         end = content.find('\n', begin)) {
        take(content.substr(begin, end - begin), end + 1);
        begin = end + 1;
    }
    return content.substr(begin);
}

} // namespace

RecordFolder::RecordFolder(const std::string& path, const RecordFolderLimits& limits,
                           std::uint32_t waitMs)
    : path_(path)
    , limits_(limits)
{
    limits_.fileBytes = std::min(limits_.fileBytes, limits_.folderBytes);
    std::error_code error;
    fs::create_directories(PathOf(path), error);
    lock_ = std::make_unique<RecorderLock>(path, waitMs);
    names_ = NamesIn(path);
    Continue();
}

// Finds the last complete record. Cuts the last file after that record and its remarks: a line may
// be torn there.
void RecordFolder::Continue()
{
    while (!names_.empty() && !last_) {
        const fs::path path = PathIn(path_, names_.back());
        const std::string content = ReadWholeFile(path);
        std::size_t end = 0;
        EachLine(content, [&](std::string_view line, std::size_t next) {
            if (line.starts_with(kRemark) && end + line.size() + 1 == next) {
                remark_ = line.substr(kRemark.size());
                end = next;
                return;
            }
            RecordLine read = ParseRecordLine(line);
            if (read.grade == LineGrade::kUnreadable) {
                return;
            }
            firstMs_ = last_ ? firstMs_ : read.record.timeMs;
            last_ = std::move(read.record);
            remark_.clear();
            end = next;
        });
        if (!last_) { // the file was begun, but has no complete record
            fs::remove(path);
            names_.pop_back();
            continue;
        }
        fs::resize_file(path, end);
        size_ = end;
        file_.open(path, std::ios::binary | std::ios::app);
    }
}

std::vector<Record> RecordFolder::Newest() const
{
    std::vector<Record> newest;
    for (auto name = names_.rbegin(); name != names_.rend() && newest.size() < kMostInRing;
         ++name) {
        const std::string content = ReadWholeFile(PathIn(path_, *name));
        std::vector<Record> ofFile;
        EachLine(content, [&ofFile](std::string_view line, std::size_t) {
            RecordLine read = ParseRecordLine(line);
            if (read.grade != LineGrade::kUnreadable) {
                ofFile.push_back(std::move(read.record));
            }
        });
        newest.insert(newest.begin(), std::make_move_iterator(ofFile.begin()),
                      std::make_move_iterator(ofFile.end()));
    }
    return newest;
}

void RecordFolder::Add(const Record& record)
{
    const std::string line = LineOf(record) + "\n";
    if (names_.empty() || size_ + line.size() > limits_.fileBytes ||
        record.timeMs - firstMs_ >= limits_.fileMs) {
        BeginFile(record.timeMs);
    }
    Write(line);
    last_ = record;
    remark_.clear();
}

void RecordFolder::AddRemark(std::string_view text)
{
    if (!names_.empty() && text != remark_) {
        remark_ = text;
        Write(std::string(kRemark) + remark_ + "\n");
    }
}

void RecordFolder::BeginFile(std::int64_t timeMs)
{
    const std::uint64_t number =
        names_.empty() ? 1 : NumberOfRecordFile(names_.back()).value_or(0) + 1;
    const std::string name = NameOfRecordFile(number, timeMs);
    if (file_.is_open()) {
        Flush(); // throws if the disk is full; close() would lose the records in silence
        file_.close();
    }
    file_.open(PathIn(path_, name), std::ios::binary | std::ios::app);
    names_.push_back(name);
    size_ = 0;
    firstMs_ = timeMs;
    RemoveOldest();
}

// A file that another program reads cannot be removed on Windows. It stays among the names, and the
// next file tries again.
void RecordFolder::RemoveOldest()
{
    std::error_code error;
    std::uint64_t total = limits_.fileBytes; // the present file will have about this size
    std::vector<std::uint64_t> sizes;
    for (const std::string& name : names_) {
        const std::uintmax_t size = fs::file_size(PathIn(path_, name), error);
        sizes.push_back(error ? 0 : size);
        total += sizes.back();
    }
    std::vector<std::string> kept;
    for (std::size_t index = 0; index < names_.size(); ++index) {
        const bool isSurplus = index + 1 < names_.size() && total > limits_.folderBytes;
        if (isSurplus && (fs::remove(PathIn(path_, names_[index]), error) || !error)) {
            total -= sizes[index];
        } else {
            kept.push_back(std::move(names_[index]));
        }
    }
    names_ = std::move(kept);
}

void RecordFolder::Write(const std::string& line)
{
    file_ << line;
    size_ += line.size();
    if (!file_) {
        throw std::runtime_error(path_ + " cannot be written");
    }
}

void RecordFolder::Flush()
{
    if (!names_.empty() && !file_.flush()) {
        throw std::runtime_error(path_ + " cannot be written");
    }
}

bool IsRecordFolder(const std::string& path)
{
    std::error_code error;
    return fs::is_directory(PathOf(path), error);
}

std::vector<std::string> RecordFilesOf(const std::string& path)
{
    std::vector<std::string> files;
    for (const std::string& name : NamesIn(path)) {
        const std::u8string file = PathIn(path, name).u8string();
        files.emplace_back(file.begin(), file.end());
    }
    return files;
}

ScanSummary ReadRecordFolder(const std::string& path, const RecordCallback& onRecord)
{
    ScanSummary summary;
    const std::vector<std::string> names = NamesIn(path);
    if (names.empty()) {
        throw std::runtime_error(path + " cannot be read: the folder holds no recorded log");
    }
    for (const std::string& name : names) {
        const std::string content = ReadUnlessRemoved(PathIn(path, name));
        const std::string_view rest = EachLine(content, [&](std::string_view line, std::size_t) {
            if (line.starts_with('#')) {
                return;
            }
            RecordLine read = ParseRecordLine(line);
            if (read.grade == LineGrade::kUnreadable) {
                ++summary.unreadable;
                return;
            }
            ++summary.records;
            summary.damaged += read.grade == LineGrade::kWhole ? 0 : 1;
            onRecord(std::move(read.record));
        });
        summary.torn += rest.empty() ? 0 : 1;
    }
    return summary;
}

std::string LineOf(const Record& record)
{
    return (record.number ? std::to_string(*record.number) : std::string()) + ";" + record.date +
           ";" + std::to_string(record.timeMs) + ";" + std::to_string(record.level) + ";" +
           record.text;
}

} // namespace vqrx::client::v0
