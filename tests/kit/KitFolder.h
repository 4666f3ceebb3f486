#pragma once

#include <filesystem>
#include <functional>
#include <string>

namespace vqrx::kit {

/// Returns the folder of this program, with its long names: never with one such as ADMINI~1. The
/// paths of processes and services, which Windows reports with their long names, are compared with
/// it.
[[nodiscard]] std::filesystem::path OwnFolder();

/// Reads a file of the kit.
/// @throws std::runtime_error  if the file cannot be opened
[[nodiscard]] std::string ContentOfFile(const std::filesystem::path& path);

/// Replaces the content of a file at once. While that fails, for example because a virus scanner
/// or another program holds the file open, tries again.
/// @param limitMs  milliseconds after which nothing is tried any more; 0 tries once
/// @param pause    called between two tries; empty: 50 ms
/// @return false if the file could not be replaced
[[nodiscard]] bool ReplaceContentWithin(const std::filesystem::path& path,
                                        const std::string& content, unsigned limitMs,
                                        const std::function<void()>& pause = {});

/// Replaces the content of a file at once, and lets Windows write it to the disk: the content then
/// survives a power cut. Tries for ten seconds. A program that has just opened the new file can
/// prevent the writing; Windows then does it later.
/// @return false if the file could not be replaced
[[nodiscard]] bool ReplaceContentOnDisk(const std::filesystem::path& path,
                                        const std::string& content);

} // namespace vqrx::kit
