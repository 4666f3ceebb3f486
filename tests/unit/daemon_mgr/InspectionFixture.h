#pragma once

#include "AttachInspection.h"

#include "CapturingLogger.h"
#include "StandInWmi.h"
#include "com/ComApartment.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

namespace vqrx::test {

/// A connection to WMI, by default to the stand-in, which a test gives its answers.
class InspectionFixture : public ::testing::Test {
protected:
    using ProcessInfo = system::daemon::daemon_mgr::v0::ProcessInfo;
    using Line = CapturingLogger::Line;
    using Lines = std::vector<Line>;

    /// RPC_S_SERVER_UNAVAILABLE as a result code.
    static constexpr auto kRefused = static_cast<HRESULT>(0x800706BA);

    void Connect()
    {
        wmi_ = std::make_unique<system::daemon::daemon_mgr::v0::WmiConnection>();
        wmi_->Connect(logger_);
    }

    /// Makes the stand-in answer every query with one object.
    static void Answer(const PropertyAnswer& path, const PropertyAnswer& commandLine)
    {
        TheWmiScript().processes = [=](DWORD) {
            return std::vector<ProcessAnswer>{{path, commandLine}};
        };
    }

    static PropertyAnswer Text(const std::wstring& text)
    {
        PropertyAnswer answer;
        answer.text = text;
        return answer;
    }

    static PropertyAnswer Null()
    {
        PropertyAnswer answer;
        answer.type = VT_NULL;
        return answer;
    }

    system::com::v1::ComApartment apartment_;
    CapturingLogger logger_;
    std::unique_ptr<system::daemon::daemon_mgr::v0::WmiConnection> wmi_;
};

} // namespace vqrx::test
