#pragma once

#include "ProtectedObjects.h"
#include "Weaknesses.h"

#include <string>
#include <vector>

namespace vqrx::setup::v0 {

/// Makes folders, and accepts folders that exist only if nobody else than administrators can change
/// them. The supervisor's account may change what belongs to the logs, too.
class SafeFolders {
public:
    /// @param accountSid  the account of the supervisor, which may write into \Logs; empty: SYSTEM
    ///                    or an administrator
    /// @param allowWeak   accept every folder that exists
    SafeFolders(std::string accountSid, bool allowWeak);

    /// Makes a folder that does not exist, and those above it, each with its rights from the first
    /// moment on. The rights are read back. Changes nothing in a folder that exists.
    /// @param path  UTF-8, a full path
    /// @return whether the folder was made
    /// @throws SetupError if the folder cannot be made, or if others may change it or a folder
    ///         above it: the text names them and says what to do
    bool Prepare(const std::string& path, client::v0::FolderUse use);

    /// Checks a file or a folder; does nothing if it does not exist. Refuses also a file with a
    /// second name (a hard link).
    /// @param use  of the folder in which the file lies
    /// @throws SetupError as Prepare
    void Check(const std::string& path, client::v0::FolderUse use) const;

    /// Checks a library that is loaded by its path, and that others cannot add files to its folder:
    /// Windows looks there for what the library imports. A library that does not exist passes in
    /// such a folder, because nobody else can put one there.
    /// @param path  UTF-8
    /// @throws SetupError as Prepare
    void CheckLibrary(const std::string& path) const;

    /// Says who else than administrators and the supervisor's account may read the folder of the
    /// log, and with which commands an administrator changes that. The supervisor works all the
    /// same.
    /// @param path  UTF-8, a full path
    /// @return empty if nobody else may; otherwise lines, each with "\n"
    [[nodiscard]] std::string WarningOfReaders(const std::string& path) const;

    /// Says who else than administrators may change what lies below a folder of programs: the
    /// supervisor may start programs from there.
    /// @param path  UTF-8, a full path
    /// @return empty if nobody else may; otherwise one line with "\n" that names the first few
    [[nodiscard]] std::string WarningOfContents(const std::string& path) const;

    /// Returns the folders that were made, the outermost first.
    [[nodiscard]] const std::vector<std::string>& Made() const noexcept { return made_; }

    /// Removes the folders that were made and are empty.
    void RemoveMade() noexcept;

private:
    void Make(const std::string& path, client::v0::FolderUse use);
    void CheckPath(const std::string& path, client::v0::FolderUse use) const;
    void CheckAbove(const std::string& path) const;
    void Refuse(const std::string& path, const std::vector<std::string>& weaknesses,
                const std::string& remedy) const;

    std::string accountSid_;
    bool allowWeak_;
    client::v0::TrustedSids administrators_;
    client::v0::TrustedSids writersOfLogs_; // the administrators and the account
    std::vector<std::string> made_;
};

} // namespace vqrx::setup::v0
