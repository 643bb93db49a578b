// tests/system.h on Windows.
#include "tests/system.h"

#include <cstdlib>
#include <thread>

#include <windows.h>

#include <gtest/gtest.h>

namespace kef_test {

namespace {

// A word of a command line: quoted, with the backslashes before a quotation mark doubled.
std::string quoted(const std::string& word) {
    std::string text = "\"";
    std::size_t backslashes = 0;
    for (const char c : word) {
        if (c == '"') text.append(backslashes + 1, '\\');
        backslashes = c == '\\' ? backslashes + 1 : 0;
        text += c;
    }
    return text.append(backslashes, '\\') + '"';
}

// What comes through a pipe, \r\n as \n.
std::string contents(HANDLE pipe) {
    std::string text;
    char buffer[4096];
    for (DWORD count; ReadFile(pipe, buffer, sizeof buffer, &count, nullptr) && count > 0;)
        for (DWORD i = 0; i < count; ++i)
            if (buffer[i] != '\r') text += buffer[i];
    CloseHandle(pipe);
    return text;
}

}  // namespace

Outcome run(std::vector<std::string> command, const std::vector<std::string>& settings) {
    std::string line;
    for (const std::string& word : command) line += (line.empty() ? "" : " ") + quoted(word);
    SECURITY_ATTRIBUTES inherited = {sizeof inherited, nullptr, TRUE};
    HANDLE out, err;
    STARTUPINFOA startup = {};
    startup.cb = sizeof startup;
    startup.dwFlags = STARTF_USESTDHANDLES;
    CreatePipe(&out, &startup.hStdOutput, &inherited, 0);
    CreatePipe(&err, &startup.hStdError, &inherited, 0);
    SetHandleInformation(out, HANDLE_FLAG_INHERIT, 0);
    SetHandleInformation(err, HANDLE_FLAG_INHERIT, 0);
    for (const std::string& setting : settings) {
        const std::size_t equals = setting.find('=');
        SetEnvironmentVariableA(setting.substr(0, equals).c_str(), &setting[equals + 1]);
    }
    PROCESS_INFORMATION process = {};
    const bool started = CreateProcessA(nullptr, line.data(), nullptr, nullptr, TRUE, 0, nullptr,
                                        nullptr, &startup, &process);
    for (const std::string& setting : settings)
        SetEnvironmentVariableA(setting.substr(0, setting.find('=')).c_str(), nullptr);
    CloseHandle(startup.hStdOutput);
    CloseHandle(startup.hStdError);
    Outcome outcome;
    std::thread reader([&] { outcome.err = contents(err); });
    outcome.out = contents(out);
    reader.join();
    DWORD code = 127;
    if (started) {
        WaitForSingleObject(process.hProcess, INFINITE);
        GetExitCodeProcess(process.hProcess, &code);
        CloseHandle(process.hThread);
        CloseHandle(process.hProcess);
    }
    outcome.exit_code = code < 0x80000000 ? static_cast<int>(code) : -1;  // else an exception
    return outcome;
}

void set_environment(const char* name, const char* value) { SetEnvironmentVariableA(name, value); }

std::string scratch_file(const std::string& name) {
    return testing::TempDir() + name + '_' + std::to_string(GetCurrentProcessId());
}

void* exported(const std::string& name) {
    return reinterpret_cast<void*>(GetProcAddress(GetModuleHandleA("kef.dll"), name.c_str()));
}

std::string library() {
    char name[MAX_PATH] = "";
    GetModuleFileNameA(GetModuleHandleA("kef.dll"), name, MAX_PATH);
    return name;
}

GuardedPages::GuardedPages(std::size_t size, Guard guard) {
    SYSTEM_INFO system;
    GetSystemInfo(&system);
    const std::size_t page = system.dwPageSize, used = (size + page - 1) / page * page;
    length_ = used + page;
    base_ = static_cast<char*>(
        VirtualAlloc(nullptr, length_, MEM_RESERVE | MEM_COMMIT, PAGE_READWRITE));
    if (base_ == nullptr) std::abort();
    const bool before = guard == Guard::before;
    DWORD old;
    VirtualProtect(before ? base_ : base_ + used, page, PAGE_NOACCESS, &old);
    first_ = size == 0 ? nullptr : before ? base_ + page : base_ + used - size;
}
GuardedPages::~GuardedPages() { VirtualFree(base_, 0, MEM_RELEASE); }

}  // namespace kef_test
