// A program that a test starts, watches and ends: the recorder itself, or a window manager.
#pragma once

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <optional>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace morvelin {

class RunningProgram {
public:
    using Environment = std::vector<std::pair<std::string, std::string>>;

    /// What it says goes to `<said>.out` and `<said>.err`.
    RunningProgram(std::vector<std::string> command, const Environment& environment, std::filesystem::path said)
        : m_said(std::move(said)) {
        m_process = fork();
        if (m_process != 0) return;
        prctl(PR_SET_PDEATHSIG, SIGKILL); // a test that is killed takes it along
        for (const auto& [name, value] : environment) setenv(name.c_str(), value.c_str(), 1);
        redirect(STDOUT_FILENO, ".out");
        redirect(STDERR_FILENO, ".err");
        std::vector<char*> words;
        for (std::string& word : command) words.push_back(word.data());
        words.push_back(nullptr);
        execvp(words[0], words.data());
        _exit(127);
    }
    ~RunningProgram() {
        if (m_process > 0) end(SIGKILL);
    }
    RunningProgram(const RunningProgram&) = delete;
    RunningProgram& operator=(const RunningProgram&) = delete;

    /// Sends a signal and waits for the end; the exit status, or nothing when a signal ended it.
    std::optional<int> end(int signal) {
        ::kill(m_process, signal);
        return wait();
    }
    std::optional<int> wait() {
        int status = 0;
        waitpid(std::exchange(m_process, -1), &status, 0);
        return WIFEXITED(status) ? std::optional(WEXITSTATUS(status)) : std::nullopt;
    }
    [[nodiscard]] std::string output() const { return content(".out"); }
    [[nodiscard]] std::string errors() const { return content(".err"); }

private:
    void redirect(int descriptor, const char* extension) const {
        const std::string path = m_said.string() + extension;
        dup2(::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0666), descriptor);
    }
    [[nodiscard]] std::string content(const char* extension) const {
        std::ostringstream text;
        text << std::ifstream(m_said.string() + extension).rdbuf();
        return text.str();
    }

    std::filesystem::path m_said;
    pid_t m_process = -1;
};

} // namespace morvelin
