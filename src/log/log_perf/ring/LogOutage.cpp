#include "log_perf/ring/LogOutage.h"

#include <system_error>
#include <utility>

namespace vqrx::log::log_perf::v2 {
namespace {

std::string BeginningOf(const std::string& file, int error)
{
    const std::string reason =
        error != 0 ? std::generic_category().message(error) : std::string("unknown error");
    return "Log file " + file + " cannot be written: " + reason +
           ". Messages are lost until it can be written again";
}

std::string EndOf(const std::string& file, std::uint64_t missing, const std::string& keptAs)
{
    const std::string text = "Log file " + file + " is written again. Messages missing in it: " +
                             std::to_string(missing);
    return keptAs.empty() ? text : text + ". The damaged file is kept as " + keptAs;
}

} // namespace

std::string LogOutage::NoteFor(const std::string& file) const
{
    return EndOf(file, LostBefore(), keptAs_);
}

void LogOutage::Noted() noexcept
{
    missing_ += std::exchange(lost_, 1) - 1;
}

void LogOutage::Written() noexcept
{
    missing_ += std::exchange(lost_, 0) - 1;
    if (missing_ != 0) {
        cost_ = std::exchange(missing_, 0);
        known_ = false;
        due_ = Due::kEnd;
    }
}

void LogOutage::Failed(int error) noexcept
{
    if (!std::exchange(known_, true)) {
        error_ = error;
        due_ = Due::kBeginning;
    }
}

void LogOutage::KeptAs(std::string path) noexcept
{
    keptAs_ = std::move(path);
}

std::optional<std::string> LogOutage::TakeReport(const std::string& file)
{
    if (due_ == Due::kNothing) {
        return std::nullopt;
    }
    const bool over = due_ == Due::kEnd;
    std::string report = over ? EndOf(file, cost_, keptAs_) : BeginningOf(file, error_);
    due_ = Due::kNothing;
    if (over) {
        keptAs_.clear();
    }
    return report;
}

} // namespace vqrx::log::log_perf::v2
