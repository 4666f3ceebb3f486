#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace vqrx::test {

/// Starts the supervisor three times on what a power failure left, each time with the real sink,
/// and lets daemonctl read the file each time.
/// - No start throws, and each writes its record to the file.
/// - Every record whose line is whole in the file is in the sink's history. Only the first one
///   after the write position may be missing, because it gives only its number.
/// - daemonctl shows the new record, and every record whose line is whole. Two of those after the
///   write position may be missing: they look like records that are being overwritten, or that are
///   left of an earlier round through the ring.
class ThreeStarts {
public:
    /// @param name  of the file that each image is put into
    explicit ThreeStarts(std::string name);

    /// Examines one image. The test fails if the image breaks a promise.
    /// @param known  lines of records, with their ends, that may be in the file
    void On(const std::string& image, std::uint32_t limit, const std::vector<std::string>& known);

    /// Returns how many images were examined.
    [[nodiscard]] std::size_t Images() const noexcept { return images_; }

private:
    /// The known records whose lines are whole in the file.
    struct Whole {
        std::vector<std::string> texts;     ///< oldest first
        std::vector<std::string> afterHead; ///< those after the write position, in their order
    };

    [[nodiscard]] Whole WholeRecords(const std::string& bytes) const;
    void Start(const std::string& text, std::int64_t seconds, std::uint32_t limit,
               const Whole& whole);
    void ReadWithClient(const std::string& text, const Whole& whole) const;

    std::string name_;
    std::vector<std::string> known_;
    std::size_t images_ = 0;
};

} // namespace vqrx::test
