#pragma once

#include <iostream>
#include <streambuf>

namespace vqrx::test {

/// Replaces the buffer of std::cout: takes each character and fails when the stream is flushed, as
/// a file on a full disk does.
class FullDisk : public std::streambuf {
public:
    FullDisk()
        : before_(std::cout.rdbuf(this))
    {
    }

    FullDisk(const FullDisk&) = delete;
    FullDisk& operator=(const FullDisk&) = delete;
    ~FullDisk() override
    {
        std::cout.rdbuf(before_); // also clears the state of std::cout
    }

protected:
    int_type overflow(int_type character) override { return character; }
    int sync() override { return -1; }

private:
    std::streambuf* before_;
};

} // namespace vqrx::test
