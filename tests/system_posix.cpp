// tests/system.h on POSIX systems.
#include "tests/system.h"

#include <cstdio>
#include <cstdlib>

#include <dlfcn.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

namespace kef_test {

namespace {

std::string contents(std::FILE* file) {
    std::string text;
    std::rewind(file);
    for (int c; (c = std::fgetc(file)) != EOF;) text += static_cast<char>(c);
    std::fclose(file);
    return text;
}

}  // namespace

Outcome run(std::vector<std::string> command, const std::vector<std::string>& settings) {
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

void set_environment(const char* name, const char* value) {
    if (value != nullptr) setenv(name, value, 1);
    else unsetenv(name);
}

std::string scratch_file(const std::string& name) {
    const char* const memory = "/dev/shm/";
    const std::string folder = access(memory, W_OK) == 0 ? memory : testing::TempDir();
    return folder + name + '_' + std::to_string(getpid());
}

void* exported(const std::string& name) { return dlsym(RTLD_DEFAULT, name.c_str()); }

std::string library() {
    Dl_info file;
    return dladdr(exported("kef_version"), &file) != 0 ? file.dli_fname : "";
}

GuardedPages::GuardedPages(std::size_t size, Guard guard) {
    const std::size_t page = sysconf(_SC_PAGESIZE), used = (size + page - 1) / page * page;
    length_ = used + page;
    base_ = static_cast<char*>(
        mmap(nullptr, length_, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));
    if (base_ == MAP_FAILED) std::abort();
    const bool before = guard == Guard::before;
    mprotect(before ? base_ : base_ + used, page, PROT_NONE);
    first_ = size == 0 ? nullptr : before ? base_ + page : base_ + used - size;
}
GuardedPages::~GuardedPages() { munmap(base_, length_); }

}  // namespace kef_test
