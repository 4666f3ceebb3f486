#include "ProtectedObjects.h"

#include "AccountNames.h"
#include "ContentToDisk.h"
#include "Utf8.h"
#include "win32/LocalMemory.h"
#include "win32/UniqueHandle.h"

#include <windows.h>

#include <sddl.h>

#include <array>
#include <cstddef>

namespace vqrx::client::v0 {
namespace {

using system::win32::v1::UniqueKernelHandle;
using system::win32::v1::UniqueLocalMemory;

// Access lists in Windows' text form: P keeps the rights of the folder above away, OICI hands these
// rights on to everything inside, FA is full access, 0x1200a9 is to read and execute. SY is SYSTEM,
// BA the administrators, BU the users, OW the owner.
constexpr const wchar_t* kForPrograms =
    L"D:P(A;OICI;FA;;;SY)(A;OICI;FA;;;BA)(A;OICI;0x1200a9;;;BU)";
constexpr const wchar_t* kForLogs = L"D:P(A;OICI;FA;;;SY)(A;OICI;FA;;;BA)";
constexpr const wchar_t* kForFile = L"D:P(A;;FA;;;SY)(A;;FA;;;BA)(A;;FA;;;OW)";

// Security attributes made from the text form.
class Attributes {
public:
    explicit Attributes(const std::wstring& text)
    {
        PSECURITY_DESCRIPTOR descriptor = nullptr;
        if (ConvertStringSecurityDescriptorToSecurityDescriptorW(text.c_str(), SDDL_REVISION_1,
                                                                 &descriptor, nullptr) == FALSE) {
            error_ = GetLastError();
        }
        descriptor_.reset(descriptor);
        attributes_ = {sizeof attributes_, descriptor, FALSE};
    }

    [[nodiscard]] DWORD Error() const noexcept { return error_; }
    [[nodiscard]] SECURITY_ATTRIBUTES* Get() noexcept { return &attributes_; }

private:
    DWORD error_ = 0;
    UniqueLocalMemory<void> descriptor_;
    SECURITY_ATTRIBUTES attributes_{};
};

} // namespace

std::uint32_t MakeProtectedFolder(const std::string& path, FolderUse use,
                                  const std::string& accountSid)
{
    std::wstring list = use == FolderUse::kPrograms ? kForPrograms : kForLogs;
    if (use == FolderUse::kLogs && !accountSid.empty()) {
        list += L"(A;OICI;FA;;;" + Wide(accountSid) + L")";
    }
    Attributes attributes(list);
    if (attributes.Error() != 0) {
        return attributes.Error();
    }
    return CreateDirectoryW(Wide(path).c_str(), attributes.Get()) != FALSE ? 0 : GetLastError();
}

std::uint32_t WriteProtectedFile(const std::string& path, const std::string& content)
{
    Attributes attributes(kForFile);
    if (attributes.Error() != 0) {
        return attributes.Error();
    }
    const UniqueKernelHandle file(CreateFileW(Wide(path).c_str(), GENERIC_WRITE | DELETE, 0,
                                              attributes.Get(), CREATE_NEW,
                                              FILE_ATTRIBUTE_NORMAL | FILE_FLAG_OPEN_REPARSE_POINT,
                                              nullptr)); // not through a link that leads nowhere
    return file ? WriteToDisk(file.Get(), content) : GetLastError();
}

std::string SidOfAccount(const std::string& account)
{
    const std::wstring name = Wide(account);
    PSID sid = nullptr;
    if (ConvertStringSidToSidW(name.c_str(), &sid) != FALSE) {
        const UniqueLocalMemory<void> owner(sid); // only to free it
        return account;
    }
    alignas(SID) std::array<std::byte, SECURITY_MAX_SID_SIZE> buffer{};
    std::array<wchar_t, 256> domain{};
    auto size = static_cast<DWORD>(buffer.size());
    auto domainSize = static_cast<DWORD>(domain.size());
    SID_NAME_USE use{};
    if (LookupAccountNameW(nullptr, name.c_str(), buffer.data(), &size, domain.data(), &domainSize,
                           &use) == FALSE) {
        return {};
    }
    return SidText(buffer.data());
}

} // namespace vqrx::client::v0
