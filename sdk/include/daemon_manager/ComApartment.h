#pragma once

#include "daemon_manager/SupervisorClient.h"

#include <windows.h>

#include <objbase.h>

namespace daemon_manager {

/// Joins the calling thread to COM's multithreaded apartment for as long as this lives. Declare it
/// before the SupervisorClient, so that it goes after it, on the same thread.
class ComApartment {
public:
    /// @throws SupervisorError  when COM refuses, as it does a thread that is in a single-threaded
    ///         apartment already: then its owner has initialised COM, and this class is not needed
    ComApartment();
    ComApartment(const ComApartment&) = delete;
    ComApartment& operator=(const ComApartment&) = delete;
    ~ComApartment() { CoUninitialize(); }
};

} // namespace daemon_manager
