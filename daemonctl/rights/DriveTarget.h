#pragma once

#include <string>

namespace vqrx::client::v0 {

/// What Windows answers about a drive.
struct DriveAnswers {
    bool remote = false; ///< GetDriveTypeW() says DRIVE_REMOTE
    /// The first text of QueryDosDeviceW(), UTF-8: "\Device\HarddiskVolume3", or "\??\C:\work" for
    /// a drive that "subst" made. Empty if there is no such drive.
    std::string device;
    bool unknown = false; ///< QueryDosDeviceW() fails, although there may be such a drive
};

/// Where the files of a drive lie.
struct DriveTarget {
    enum class Kind {
        kHere,      ///< on this machine, or there is no such drive
        kElsewhere, ///< on a network, in a place that is no path, or unknown
        kFolder     ///< the drive stands for a folder of this machine
    };

    Kind kind = Kind::kHere;
    std::string folder; ///< of Kind::kFolder: "C:\work", UTF-8, without a backslash at its end

    bool operator==(const DriveTarget&) const = default;
};

/// Judges the answers of Windows about a drive. Pure.
[[nodiscard]] DriveTarget JudgeDrive(const DriveAnswers& answers);

} // namespace vqrx::client::v0
