// Programs as processes of their own.
#pragma once

#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include <sys/wait.h>
#include <unistd.h>

#include "places.h"

namespace kef_test {

struct Outcome {
    int exit_code = -1;  // -1: ended by a signal
    std::string out, err;
};

inline std::string contents(std::FILE* file) {
    std::string text;
    std::rewind(file);
    for (int c; (c = std::fgetc(file)) != EOF;) text += static_cast<char>(c);
    std::fclose(file);
    return text;
}

// Runs a program (looked up in the path) with NAME=value settings added to the
// environment.
inline Outcome run(std::vector<std::string> command,
                   const std::vector<std::string>& settings = {}) {
    std::FILE* out = std::tmpfile();
    std::FILE* err = std::tmpfile();
    const pid_t child = fork();
    if (child == 0) {
        dup2(fileno(out), STDOUT_FILENO);
        dup2(fileno(err), STDERR_FILENO);
        for (const std::string& setting : settings) putenv(const_cast<char*>(setting.c_str()));
        std::vector<char*> arguments;
        for (std::string& word : command) arguments.push_back(word.data());
        arguments.push_back(nullptr);
        execvp(arguments[0], arguments.data());
        _exit(127);
    }
    int status = 0;
    waitpid(child, &status, 0);
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, contents(out), contents(err)};
}

// A program of tests/clients.
inline Outcome run_client(const std::string& name, std::vector<std::string> arguments = {},
                          const std::vector<std::string>& settings = {}) {
    arguments.insert(arguments.begin(), KEF_CLIENT_DIR "/" + name);
    return run(arguments, settings);
}

}  // namespace kef_test
