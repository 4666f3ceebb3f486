#pragma once

#include <windows.h>

namespace vqrx::system::com::v1 {

/// Membership of the calling thread in the multithreaded apartment, given back at the end.
/// Made and destroyed on one thread.
class ComApartment {
public:
    /// @throws COMException when COM refuses; being a member already (S_FALSE) is fine
    ComApartment();
    ComApartment(const ComApartment&) = delete;
    ComApartment& operator=(const ComApartment&) = delete;
    ~ComApartment();
};

} // namespace vqrx::system::com::v1
