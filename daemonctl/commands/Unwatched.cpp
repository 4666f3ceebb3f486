#include "Unwatched.h"

#include "ConsoleReporter.h"
#include "HandOver.h"

#include <exception>
#include <iostream>

namespace vqrx::client::v0 {

void PrintUnwatched()
{
    try {
        if (ReportUnwatched(ConsoleReporter()).attached != 0) {
            std::cerr
                << "daemonctl: nobody starts these programs again. After a new supervisor has "
                   "started: daemonctl reattach"
                << std::endl;
        }
    } catch (const std::exception&) { // NOLINT(bugprone-empty-catch): see the header
    }
}

} // namespace vqrx::client::v0
