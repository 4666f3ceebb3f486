#pragma once

#include <iostream>
#include <string>
#include <vector>

namespace vqrx::test {

/// The failures of a run, in the order of their discovery. For one thread.
class Failures {
public:
    /// Keeps the text and prints it.
    void Add(const std::string& text)
    {
        all_.push_back(text);
        std::cout << "FAILED: " << text << std::endl;
    }
    [[nodiscard]] const std::vector<std::string>& All() const { return all_; }

private:
    std::vector<std::string> all_;
};

} // namespace vqrx::test
