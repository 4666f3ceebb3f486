#pragma once

#include "RingScan.h"

#include <array>
#include <cstdio>
#include <string>
#include <utility>
#include <vector>

namespace vqrx::test {

/// The result of a scan of a ring file.
struct Scanned {
    std::vector<client::v0::Record> records;
    client::v0::ScanSummary summary;
};

/// Scans the bytes of a ring file.
inline Scanned Scan(const std::string& bytes)
{
    Scanned scanned;
    client::v0::MemorySource source(bytes);
    scanned.summary = client::v0::ScanRing(
        source, [&](client::v0::Record record) { scanned.records.push_back(std::move(record)); });
    return scanned;
}

/// Returns the texts of the records, in their order.
inline std::vector<std::string> Texts(const Scanned& scanned)
{
    std::vector<std::string> texts;
    for (const client::v0::Record& record : scanned.records) {
        texts.push_back(record.text);
    }
    return texts;
}

/// Returns a line of a ring file.
inline std::string Line(const std::string& number, const std::string& text)
{
    return number + ";Sun Nov 16 03:52:36.123;1763265156123;2;" + text + "\r\n";
}

/// Returns the header of a ring file.
inline std::string Header(unsigned position)
{
    std::array<char, 16> text{};
    std::snprintf(text.data(), text.size(), "0x%.8X\r\n", position);
    return text.data();
}

} // namespace vqrx::test
