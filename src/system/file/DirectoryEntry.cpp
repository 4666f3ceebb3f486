#include "file/DirectoryEntry.h"

#include "utf/Transcode.h"

namespace vqrx::system::file::v2 {
namespace {

template <typename Record>
DirectoryEntry WithoutNames(const Record& record)
{
    DirectoryEntry entry;
    entry.attributes = record.dwFileAttributes;
    entry.creationTime = record.ftCreationTime;
    entry.lastAccessTime = record.ftLastAccessTime;
    entry.lastWriteTime = record.ftLastWriteTime;
    entry.sizeHigh = record.nFileSizeHigh;
    entry.sizeLow = record.nFileSizeLow;
    entry.reserved0 = record.dwReserved0;
    entry.reserved1 = record.dwReserved1;
    return entry;
}

} // namespace

DirectoryEntry EntryFrom(const WIN32_FIND_DATAA& record)
{
    DirectoryEntry entry = WithoutNames(record);
    entry.name = record.cFileName;
    entry.shortName = record.cAlternateFileName;
    return entry;
}

DirectoryEntry EntryFrom(const WIN32_FIND_DATAW& record)
{
    DirectoryEntry entry = WithoutNames(record);
    entry.name = encoding::utf::v1::WideToUtf8(record.cFileName);
    entry.shortName = encoding::utf::v1::WideToUtf8(record.cAlternateFileName);
    return entry;
}

} // namespace vqrx::system::file::v2
