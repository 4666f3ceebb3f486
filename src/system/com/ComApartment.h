#pragma once

#include <windows.h>

namespace vqrx::system::com::v1 {

/// Joins the calling thread to the multithreaded apartment of COM, and leaves it when destroyed.
/// Create and destroy it on the same thread.
class ComApartment {
public:
    /// A thread that is a member already joins once more.
    /// @throws COMException  if COM refuses, for example a thread in a single-threaded apartment
    ComApartment();
    ComApartment(const ComApartment&) = delete;
    ComApartment& operator=(const ComApartment&) = delete;
    ~ComApartment();
};

} // namespace vqrx::system::com::v1
