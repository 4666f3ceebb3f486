#pragma once

// Fake of the Windows header for native builds. ../README.md lists every function and says how to
// add one. On Windows, headers with the same names declare the functions.

#include <handleapi.h>
#include <libloaderapi.h>
#include <processthreadsapi.h>
#include <stringapiset.h>
#include <synchapi.h>
#include <sysinfoapi.h>
#include <windef.h>
#include <winsvc.h>
#include <winuser.h>
