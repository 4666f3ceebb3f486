#pragma once

// Fake of the Windows header for native builds. ../README.md lists every function and says how to
// add one. The headers below are named as those that declare the functions on Windows.

#include <handleapi.h>
#include <processthreadsapi.h>
#include <stringapiset.h>
#include <synchapi.h>
#include <sysinfoapi.h>
#include <windef.h>
#include <winsvc.h>
#include <winuser.h>
