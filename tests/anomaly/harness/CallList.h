#pragma once

#include "Injection.h"

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace vqrx::test::anomaly {

/// One path of a scenario, as the undisturbed runs took it.
struct ListedPath {
    std::uint64_t key = 0;
    std::uint32_t calls = 0; ///< the largest number of calls in an undisturbed run
    std::string name;        ///< of the function
    std::vector<std::uint32_t> frames;
};

/// The calls of a scenario. A process of the runs writes them to a file for its successor and for
/// the process that reports.
class CallList {
public:
    /// Adds the paths that were taken in the run that has just ended, without those that lead
    /// through a FatalPlace.
    void AddTakenPaths();

    /// @throws std::runtime_error if the file cannot be written
    void Write(const std::string& fileName) const;
    /// @return empty if there is no such file
    [[nodiscard]] static CallList Read(const std::string& fileName);

    [[nodiscard]] bool IsEmpty() const { return paths_.empty(); }
    [[nodiscard]] std::size_t PathCount() const { return paths_.size(); }

    /// Returns the calls in an order that depends on the seed alone.
    /// @param callsOfPath  of each path at most so many first calls
    [[nodiscard]] std::vector<CallPoint> Points(std::uint32_t seed,
                                                std::uint32_t callsOfPath) const;

    /// Returns a text such as "call 3 of CreateEventA" and lines with the places that led to it.
    [[nodiscard]] std::string Describe(const CallPoint& point) const;

private:
    std::map<std::uint64_t, ListedPath> paths_;
};

} // namespace vqrx::test::anomaly
