#pragma once

#include "daemon_manager/SupervisorClient.h"

#include <windows.h>

#include <objbase.h>

namespace daemon_manager {

/// Joins the calling thread to the multithreaded apartment of COM, and leaves it when destroyed.
/// Declare it before the SupervisorClient, so that it is destroyed after the client. Create and
/// destroy it on the same thread.
class ComApartment {
public:
    /// A thread that is a member already joins once more.
    /// @throws SupervisorError  if COM refuses, for example because the thread is in a
    ///         single-threaded apartment. Such a thread can use SupervisorClient without this
    ///         class.
    ComApartment();
    ComApartment(const ComApartment&) = delete;
    ComApartment& operator=(const ComApartment&) = delete;
    ~ComApartment() { CoUninitialize(); }
};

} // namespace daemon_manager
