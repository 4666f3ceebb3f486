#include "log_perf/ring/NoticesOfDamage.h"

#include "log_perf/ring/SetAside.h"
#include "ring_format/DamagedRing.h"

namespace vqrx::log::log_perf::v2 {

NoticesOfDamage::NoticesOfDamage(const std::string& name, const char* reason)
    : name_(name)
    , keptAs_(system::ring_format::v1::DamagedRingsOf(name))
    , notKept_("Log file " + name + " is damaged: " + reason)
    , kept_{notKept_ + ". It is kept as " + keptAs_[0], notKept_ + ". It is kept as " + keptAs_[1]}
{
    notKept_ += ". It cannot be set aside, and no message is written to it";
}

bool NoticesOfDamage::SetAside()
{
    while (used_ < keptAs_.size() && !v2::SetAside(name_, keptAs_[used_])) {
        ++used_;
    }
    return used_ < keptAs_.size();
}

} // namespace vqrx::log::log_perf::v2
