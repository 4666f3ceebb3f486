#pragma once

#include "Finding.h"

#include <gtest/gtest.h>

#include <string>

namespace vqrx::test {

/// Expects verdict and text of a finding, and a remedy exactly if the verdict is not ok.
inline void ExpectFinding(const client::v0::Finding& finding, client::v0::Verdict verdict,
                          const std::string& text)
{
    EXPECT_EQ(finding.verdict, verdict) << finding.check << ": " << finding.text;
    EXPECT_EQ(finding.text, text);
    EXPECT_EQ(finding.remedy.empty(), verdict == client::v0::Verdict::kOk) << finding.remedy;
}

} // namespace vqrx::test
