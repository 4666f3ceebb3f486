#pragma once

#include "Payload.h"

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace vqrx::setup::v0 {

/// Replaces the files of an installation. The new files are unpacked into a fresh folder with a
/// random name below the folder of the programs. The supervisor keeps running meanwhile: unpacking
/// may fail for lack of space. After that the files only change their names. So programs that run
/// and libraries that are loaded can be replaced too, and every step can be taken back.
/// Files are removed by their names only: nothing is deleted with all that a folder holds.
class FileSwap {
public:
    /// @param folder      the folder of the programs, UTF-8; nobody else than administrators may
    ///                    write there
    /// @param patienceMs  milliseconds that TakeBack() waits for files that somebody holds open,
    ///                    for all files together
    explicit FileSwap(std::string folder, std::uint32_t patienceMs = 10000)
        : folder_(std::move(folder))
        , patienceMs_(patienceMs)
    {
    }
    FileSwap(const FileSwap&) = delete;
    FileSwap& operator=(const FileSwap&) = delete;
    ~FileSwap() { Discard(); }

    /// Makes the fresh folder and writes the files into it.
    /// @throws SetupError if not every file could be written
    void Unpack(const std::vector<PayloadFile>& files);

    /// Sets the former files aside and moves the new ones to their places.
    /// @param former  names of the files of the former installation; those that the new one lacks
    ///                go too
    /// @throws SetupError if a file could not be moved; then everything was taken back, except what
    ///         the text names
    void SwapIn(const std::vector<std::string>& former);

    /// Moves all files back to where they were before SwapIn(). Waits for a file that somebody
    /// holds open. If a file cannot be moved even then, goes on with the others.
    /// @return a line for each file that could not be moved, for people; empty if all were
    [[nodiscard]] std::string TakeBack() noexcept;

    /// Calls TakeBack(), unless Keep() was called, and removes the unpacked files.
    void Discard() noexcept;

    /// Deletes the former files. Windows deletes a file that is in use when Windows starts next.
    void Keep() noexcept;

    /// Returns where an unpacked file lies at present.
    [[nodiscard]] std::string PlaceOf(const std::string& name) const;

private:
    void Move(const std::string& from, const std::string& to);
    void SetAside(const std::string& name);

    std::string folder_;
    std::uint32_t patienceMs_; // milliseconds that TakeBack() may still wait
    std::string newFolder_;
    std::string oldFolder_;
    std::vector<std::string> names_;                             // of the new files
    std::vector<std::string> aside_;                             // of the former files
    std::vector<std::pair<std::string, std::string>> movements_; // from, to
    std::vector<std::string> madeFolders_;                       // below the folder of the programs
    bool swapped_ = false;
};

/// Returns the folders of a name, the outermost first: "sdk" and "sdk\src" for "sdk\src\a.cpp".
/// Pure.
[[nodiscard]] std::vector<std::string> FoldersOfName(const std::string& name);

/// Returns the folders of all names, each once, an inner folder before the one that holds it. Pure.
[[nodiscard]] std::vector<std::string> FoldersInside(const std::vector<std::string>& names);

/// Moves a file, and waits while somebody holds it so that nobody can move it. Whoever may read a
/// file can do that: a scanner does it for a moment. Windows is not asked to move the file when it
/// starts next: by then a newer file may be in one of the two places.
/// @param patienceMs  how long to wait, milliseconds; the time that was waited is taken off
/// @return the error of Windows; 0: moved
[[nodiscard]] std::uint32_t MoveWhenReleased(const std::string& from, const std::string& to,
                                             std::uint32_t& patienceMs);

/// Deletes a file. If a program uses it, Windows deletes it when it starts next.
void DeleteOrLater(const std::string& path) noexcept;

/// Removes a folder if it is empty.
/// @param later  Windows removes it when it starts next, if it is empty then
void RemoveEmptyFolder(const std::string& path, bool later) noexcept;

} // namespace vqrx::setup::v0
