#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace vqrx::kit {

/// One test program of the kit, with all that ctest knows of it. Texts are UTF-8.
struct TestProgram {
    std::string name;                   ///< as in ctest
    std::string program;                ///< path below the kit's folder, with backslashes
    std::vector<std::string> arguments; ///< "{work}" stands for the folder that the program gets
    std::vector<std::string> locks;     ///< what the machine has once: rot, registry, services, ...
    unsigned timeoutSeconds = 0;        ///< a program that runs longer is ended
    double cost = 0;                    ///< programs of a high cost start first
    bool takesLong = false;             ///< left out of a quick run
    bool googleTest = false;            ///< the program can write its results as JSON
};

/// A test of the project that the kit does not contain.
struct NotInKit {
    std::string name;
    std::string reason;
};

/// The content of a kit.
struct Manifest {
    std::string version; ///< of the product
    std::string commit;  ///< that the programs were built from
    std::vector<TestProgram> programs;
    std::vector<NotInKit> notInKit;
};

/// Reads the file manifest.json, which pack.py makes from ctest's own list of tests.
/// @throws std::runtime_error  if the text is no manifest
[[nodiscard]] Manifest ReadManifest(std::string_view json);

/// Returns whether the program changes something that only administrators may change. Its locks
/// tell.
[[nodiscard]] bool NeedsAdministrator(const TestProgram& program);

} // namespace vqrx::kit
