#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace vqrx::test {

/// Starts the supervisor three times on what a power failure left, each time with the real sink, and
/// lets daemonctl read the file each time.
/// - No start throws, and each writes its record to the file.
/// - Every record whose line is whole in the file is in the sink's history. One may be missing: the
///   first one after the write position, which gives only its number.
/// - The numbers of the history and of the new record are consecutive.
/// - daemonctl shows the new record, and every record whose line is whole. Two may be missing: those
///   beside the write position, which look like records that are being overwritten.
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
    using Whole = std::vector<std::string>; // texts of the records whose lines are whole

    [[nodiscard]] Whole WholeTexts(const std::string& bytes) const;
    void Start(const std::string& text, std::int64_t seconds, std::uint32_t limit,
               const Whole& whole);
    void ReadWithClient(const std::string& text, const Whole& whole) const;

    std::string name_;
    std::vector<std::string> known_;
    std::size_t images_ = 0;
};

} // namespace vqrx::test
