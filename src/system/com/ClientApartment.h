#pragma once

#include "com/ComApartment.h"

namespace vqrx::system::com::v1 {

/// Joins the calling thread to COM as ComApartment does, in a program that asks other processes for
/// their objects. The first one in the process also limits the classes that may rebuild such an
/// object, see RequireTrustedUnmarshalers(): COM rebuilds an object of the Running Object Table
/// before anybody can see whose it is. If Windows refuses that, the program goes on without it.
class ClientApartment {
public:
    /// @throws COMException  as ComApartment
    ClientApartment();
    ClientApartment(const ClientApartment&) = delete;
    ClientApartment& operator=(const ClientApartment&) = delete;
    ~ClientApartment() = default;

private:
    ComApartment apartment_;
};

} // namespace vqrx::system::com::v1
