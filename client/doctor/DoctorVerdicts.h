#pragma once

#include "doctor/DoctorFacts.h"

#include <string>
#include <vector>

namespace vqrx::client::v0 {

enum class Verdict { ok, warning, failure };

/// One thing that must be true for the supervisor to do its work, and whether it is.
struct Finding {
    std::string check; ///< a fixed name, for scripts
    Verdict verdict = Verdict::ok;
    std::string text;
    std::string remedy; ///< empty when nothing is to be done
};

/// Judges what was found out. Pure. The order is the order in which things are best mended.
std::vector<Finding> Judge(const DoctorFacts& facts);

/// The worst of the findings as an exit code: 0 all is well, 1 there are warnings, 4 something
/// fails, 3 when what fails is only that no supervisor runs or that its proxy/stub is missing.
int ExitCodeOf(const std::vector<Finding>& findings);

/// "error 5 (access denied)".
std::string ErrorNumberText(std::uint32_t error);

/// "0x80070005".
std::string ResultText(long result);

} // namespace vqrx::client::v0
