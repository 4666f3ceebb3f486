#include "ContentRights.h"

#include "ObjectRights.h"
#include "Utf8.h"
#include "win32/UniqueHandle.h"

#include <windows.h>

#include <utility>

namespace vqrx::client::v0 {
namespace {

// The full path of what lies in a folder; also in the root of a drive, which ends in a backslash.
std::wstring PathIn(const std::wstring& folder, const wchar_t* name)
{
    return folder + (folder.ends_with(L'\\') ? L"" : L"\\") + name;
}

ObjectRights Unreadable(const std::wstring& path, DWORD error)
{
    ObjectRights rights;
    rights.path = Utf8(path);
    rights.error = error;
    return rights;
}

// Says that a file has disappeared since its folder was listed. For a path that is too long Windows
// gives one of these errors, too, although the file is there.
bool IsGone(const std::wstring& path, DWORD error)
{
    return error == ERROR_FILE_NOT_FOUND ||
           (error == ERROR_PATH_NOT_FOUND && path.size() < MAX_PATH);
}

// Windows reads another file under the path of a name that ends in a blank or a dot, and after the
// conversion of a name that is no valid UTF-16.
ObjectRights ReadListed(const std::wstring& path)
{
    if (path.ends_with(L' ') || path.ends_with(L'.')) {
        return Unreadable(path, ERROR_INVALID_NAME);
    }
    const std::string utf8 = Utf8(path);
    return Wide(utf8) == path ? ReadRights(utf8) : Unreadable(path, ERROR_NO_UNICODE_TRANSLATION);
}

// Lists one folder.
class FolderSearch {
public:
    explicit FolderSearch(const std::wstring& folder)
        : pattern_(PathIn(folder, L"*"))
        , search_(FindFirstFileExW(pattern_.c_str(), FindExInfoBasic, &entry_,
                                   FindExSearchNameMatch, nullptr, 0))
    {
        error_ = search_ ? ERROR_SUCCESS : GetLastError();
    }

    // @return the next entry; null: there is none, or Error() is not 0
    [[nodiscard]] const WIN32_FIND_DATAW* Next()
    {
        while (error_ == ERROR_SUCCESS) {
            if (!std::exchange(hasEntry_, false) &&
                FindNextFileW(search_.Get(), &entry_) == FALSE) {
                error_ = GetLastError();
                break;
            }
            const std::wstring_view name = entry_.cFileName; // NOLINT: Windows' own array
            if (name != L"." && name != L"..") {
                return &entry_;
            }
        }
        return nullptr;
    }

    // 0 also at the end of the list, and for a folder that is gone
    [[nodiscard]] DWORD Error() const noexcept
    {
        return error_ == ERROR_NO_MORE_FILES || IsGone(pattern_, error_) ? ERROR_SUCCESS : error_;
    }

private:
    std::wstring pattern_;
    WIN32_FIND_DATAW entry_{};
    system::win32::v1::UniqueFindHandle search_;
    bool hasEntry_ = true;
    DWORD error_ = ERROR_SUCCESS;
};

} // namespace

void EachBelow(const std::string& folder, const std::function<bool(const ObjectRights&)>& take)
{
    const ObjectRights start = ReadRights(folder);
    std::vector<std::wstring> folders;
    if (start.kind == ObjectRights::Kind::kFolder && !start.reparsePoint) {
        folders.push_back(Wide(folder));
    }
    while (!folders.empty()) {
        const std::wstring current = std::move(folders.back());
        folders.pop_back();
        FolderSearch search(current);
        while (const WIN32_FIND_DATAW* const entry = search.Next()) {
            const std::wstring path = PathIn(current, entry->cFileName);
            const ObjectRights rights = ReadListed(path);
            if (IsGone(path, rights.error)) {
                continue;
            }
            if (!take(rights)) {
                return;
            }
            if (rights.kind == ObjectRights::Kind::kFolder && !rights.reparsePoint) {
                folders.push_back(path);
            }
        }
        if (search.Error() != ERROR_SUCCESS && !take(Unreadable(current, search.Error()))) {
            return;
        }
    }
}

ContentRights ReadContentRights(const std::string& folder, const TrustedSids& trusted,
                                const ContentLimits& limits)
{
    ContentRights content;
    content.folder = folder;
    EachBelow(folder, [&](const ObjectRights& rights) {
        content.complete = content.looked < limits.looked;
        if (!content.complete) {
            return false;
        }
        ++content.looked;
        if (!Weaknesses(rights, trusted).empty()) {
            if (content.weak.size() < limits.weak) {
                content.weak.push_back(rights);
            } else {
                ++content.further;
            }
        }
        return true;
    });
    return content;
}

} // namespace vqrx::client::v0
