#include "SetupWindow.h"

#include "Conversation.h"
#include "Installation.h"
#include "Removal.h"
#include "SetupWindowIds.h"
#include "Utf8.h"

#include <windows.h>

#include <shlobj.h>

#include <array>
#include <memory>
#include <string>
#include <thread>
#include <utility>

namespace vqrx::setup::v0 {
namespace {

using client::v0::Utf8;
using client::v0::Wide;

constexpr UINT kShowText = WM_APP; // lParam: a std::wstring, owned by the receiver
constexpr UINT kAsk = WM_APP + 1;  // lParam: a std::wstring of the sender; the answer is the result
constexpr UINT kFinished = WM_APP + 2; // wParam: the exit code

// Windows carries pointers as numbers.
template <typename Type>
Type* PointerIn(LONG_PTR number)
{
    return reinterpret_cast<Type*>(number); // NOLINT(performance-no-int-to-ptr)
}

// Joins the thread to COM for the dialogs of the shell, if Windows allows it.
class OleApartment {
public:
    OleApartment() noexcept
        : result_(OleInitialize(nullptr))
    {
    }
    OleApartment(const OleApartment&) = delete;
    OleApartment& operator=(const OleApartment&) = delete;
    ~OleApartment()
    {
        if (SUCCEEDED(result_)) {
            OleUninitialize();
        }
    }

private:
    HRESULT result_;
};

// Frees what the shell allocated.
struct TaskMemoryFreer {
    void operator()(void* memory) const noexcept { CoTaskMemFree(memory); }
};

// Shows the texts of the working thread in the window, on the thread of the window.
class WindowConversation : public Conversation {
public:
    explicit WindowConversation(HWND window)
        : window_(window)
    {
    }

    void Say(const std::string& text) override
    {
        auto wide = std::make_unique<std::wstring>();
        for (const wchar_t letter : Wide(text)) {
            *wide += letter == L'\n' ? L"\r\n" : std::wstring(1, letter);
        }
        if (PostMessageW(window_, kShowText, 0, reinterpret_cast<LPARAM>(wide.get())) != FALSE) {
            static_cast<void>(wide.release()); // the window frees it
        }
    }

    [[nodiscard]] bool Ask(const std::string& question) override
    {
        const std::wstring wide = Wide(question);
        return SendMessageW(window_, kAsk, 0, reinterpret_cast<LPARAM>(&wide)) != 0;
    }

private:
    HWND window_;
};

class SetupWindow {
public:
    SetupWindow(SetupOptions options, const std::vector<PayloadFile>& files)
        : options_(std::move(options))
        , files_(files)
    {
    }
    SetupWindow(const SetupWindow&) = delete;
    SetupWindow& operator=(const SetupWindow&) = delete;
    ~SetupWindow()
    {
        if (worker_.joinable()) {
            worker_.join();
        }
    }

    int Show()
    {
        const INT_PTR result =
            DialogBoxParamW(GetModuleHandleW(nullptr), MAKEINTRESOURCEW(DM_SETUP_WINDOW), nullptr,
                            Procedure, reinterpret_cast<LPARAM>(this));
        return result < 0 ? static_cast<int>(kSetupFailed) : static_cast<int>(result);
    }

private:
    static INT_PTR CALLBACK Procedure(HWND window, UINT message, WPARAM first, LPARAM second)
    {
        if (message == WM_INITDIALOG) {
            SetWindowLongPtrW(window, DWLP_USER, second);
            PointerIn<SetupWindow>(second)->Begin(window);
            return TRUE;
        }
        auto* const self = PointerIn<SetupWindow>(GetWindowLongPtrW(window, DWLP_USER));
        return self != nullptr && self->Handle(message, first, second) ? TRUE : FALSE;
    }

    void Begin(HWND window)
    {
        window_ = window;
        const bool install = !files_.empty();
        const std::wstring title = L"DaemonManager " + Wide(DM_VERSION);
        SetWindowTextW(window_, title.c_str());
        SetDlgItemTextW(window_, DM_SETUP_TITLE,
                        install
                            ? L"Folder of the programs. A supervisor that runs is replaced; its "
                              L"daemons keep running and are handed over to the new one:"
                            : L"The supervisor is ended and its programs are removed. Its daemons "
                              L"keep running, but nobody starts them again.");
        SetDlgItemTextW(window_, IDOK, install ? L"Install" : L"Remove");
        if (install) {
            const std::string folder =
                options_.folder.empty() ? DefaultProgramFolder() : options_.folder;
            SetDlgItemTextW(window_, DM_SETUP_FOLDER, Wide(folder).c_str());
        } else {
            ShowWindow(GetDlgItem(window_, DM_SETUP_FOLDER), SW_HIDE);
            ShowWindow(GetDlgItem(window_, DM_SETUP_BROWSE), SW_HIDE);
        }
    }

    bool Handle(UINT message, WPARAM first, LPARAM second)
    {
        switch (message) {
        case WM_COMMAND:
            return OnButton(LOWORD(first));
        case kShowText:
            Append(std::unique_ptr<std::wstring>(PointerIn<std::wstring>(second)));
            return true;
        case kAsk:
            SetWindowLongPtrW(window_, DWLP_MSGRESULT,
                              MessageBoxW(window_, PointerIn<const std::wstring>(second)->c_str(),
                                          L"DaemonManager", MB_YESNO | MB_ICONQUESTION) == IDYES);
            return true;
        case kFinished:
            working_ = false;
            exitCode_ = static_cast<int>(first);
            SetDlgItemTextW(window_, IDCANCEL, L"Close");
            EnableWindow(GetDlgItem(window_, IDCANCEL), TRUE);
            return true;
        default:
            return false;
        }
    }

    bool OnButton(WORD button)
    {
        if (button == IDOK && !working_) {
            Work();
        } else if (button == IDCANCEL && !working_) {
            EndDialog(window_, exitCode_);
        } else if (button == DM_SETUP_BROWSE) {
            Browse();
        } else {
            return false;
        }
        return true;
    }

    void Work()
    {
        working_ = true;
        for (const int control : {IDOK, IDCANCEL, DM_SETUP_FOLDER, DM_SETUP_BROWSE}) {
            EnableWindow(GetDlgItem(window_, control), FALSE);
        }
        std::array<wchar_t, 1024> folder{};
        GetDlgItemTextW(window_, DM_SETUP_FOLDER, folder.data(), static_cast<int>(folder.size()));
        options_.folder = Utf8(folder.data());
        worker_ = std::thread([this] {
            WindowConversation conversation(window_);
            const int code = files_.empty() ? Remove(options_, conversation)
                                            : Install(options_, files_, conversation);
            PostMessageW(window_, kFinished, static_cast<WPARAM>(code), 0);
        });
    }

    void Browse()
    {
        std::array<wchar_t, MAX_PATH> path{};
        BROWSEINFOW info{};
        info.hwndOwner = window_;
        info.lpszTitle = L"Folder of the programs";
        info.ulFlags = BIF_RETURNONLYFSDIRS | BIF_NEWDIALOGSTYLE;
        const std::unique_ptr<ITEMIDLIST, TaskMemoryFreer> chosen(SHBrowseForFolderW(&info));
        if (chosen && SHGetPathFromIDListW(chosen.get(), path.data()) != FALSE) {
            SetDlgItemTextW(window_, DM_SETUP_FOLDER, path.data());
        }
    }

    void Append(const std::unique_ptr<std::wstring>& text) const
    {
        HWND const output = GetDlgItem(window_, DM_SETUP_OUTPUT);
        const auto end = static_cast<WPARAM>(GetWindowTextLengthW(output));
        SendMessageW(output, EM_SETSEL, end, static_cast<LPARAM>(end));
        SendMessageW(output, EM_REPLACESEL, FALSE, reinterpret_cast<LPARAM>(text->c_str()));
    }

    SetupOptions options_;
    const std::vector<PayloadFile>& files_;
    HWND window_ = nullptr;
    std::thread worker_;
    bool working_ = false;
    int exitCode_ = kSetupCancelled;
};

} // namespace

int ShowSetupWindow(const SetupOptions& options, const std::vector<PayloadFile>& files)
{
    const OleApartment apartment; // for the choice of a folder
    return SetupWindow(options, files).Show();
}

} // namespace vqrx::setup::v0
