#include "Unwatched.h"

#include "ConsoleReporter.h"
#include "HandOver.h"
#include "ThisMachine.h"

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

void PrintUnwatchedOf(const Timeline& timeline)
{
    try {
        const std::size_t count = CountUnwatched(timeline, RunOfThisMachine(timeline));
        if (count != 0) {
            std::cerr << "daemonctl: " << count
                      << (count == 1 ? " program of the former supervisor runs unwatched"
                                     : " programs of the former supervisor run unwatched")
                      << ": daemonctl reattach" << std::endl;
        }
    } catch (const std::exception&) { // NOLINT(bugprone-empty-catch): see the header
    }
}

} // namespace vqrx::client::v0
