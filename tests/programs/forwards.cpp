// Child program in the place of another one, which lies beside it as "real.exe". Appends its
// arguments, as one line, to the file "calls.txt" beside it, and runs the other program with them.
// If the arguments begin with the content of the file "refuse.txt" beside it, it ends with the exit
// code in "refuse_code.txt", or 4, instead; if the last two are "--output FILE", it writes half a
// list into that file before. If the arguments begin with the content of the file "vanish.txt"
// beside it, and the other program ends with exit code 1, it renames itself, so that nobody can
// start it any more.
#include "ChildProgram.h"

#include <iterator>

int main(int argc, char** argv)
{
    const std::string path = argv[0];
    const std::string folder = path.substr(0, path.rfind('\\') + 1);
    std::string words;
    std::string command = '"' + folder + "real.exe\"";
    for (int index = 1; index < argc; ++index) {
        words += (index == 1 ? "" : " ") + vqrx::test::Argument(argc, argv, index);
        command += " \"" + vqrx::test::Argument(argc, argv, index) + '"';
    }
    std::ofstream(folder + "calls.txt", std::ios::app) << words << std::endl;
    std::ifstream refuse(folder + "refuse.txt");
    if (refuse && words.starts_with(std::string(std::istreambuf_iterator<char>(refuse), {}))) {
        if (argc > 2 && std::string(argv[argc - 2]) == "--output") {
            std::ofstream(argv[argc - 1]) << "[{";
        }
        int refusal = 4;
        if (std::ifstream code(folder + "refuse_code.txt"); code) {
            code >> refusal;
        }
        return refusal;
    }
    STARTUPINFOA startup{};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION started{};
    if (CreateProcessA(nullptr, command.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr,
                       &startup, &started) == FALSE) {
        return 5;
    }
    WaitForSingleObject(started.hProcess, INFINITE);
    DWORD code = 0;
    GetExitCodeProcess(started.hProcess, &code);
    CloseHandle(started.hThread);
    CloseHandle(started.hProcess);
    std::ifstream vanish(folder + "vanish.txt");
    if (code == 1 && vanish &&
        words.starts_with(std::string(std::istreambuf_iterator<char>(vanish), {}))) {
        MoveFileA(path.c_str(), (folder + "vanished.exe").c_str());
    }
    return static_cast<int>(code);
}
