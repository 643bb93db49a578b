// What tests ask of the system: processes, the environment, names of the loaded library, pages that
// may not be touched. One implementation a system.
#pragma once

#include <algorithm>
#include <cstddef>
#include <string>
#include <vector>

#include "places.h"

namespace kef_test {

struct Outcome {
    int exit_code = -1;    // -1: ended by a signal
    std::string out, err;  // lines end in \n
};

// Runs a program (looked up in the path) with NAME=value settings added to the environment.
Outcome run(std::vector<std::string> command, const std::vector<std::string>& settings = {});

// A program of tests/clients.
inline Outcome run_client(const std::string& name, std::vector<std::string> arguments = {},
                          const std::vector<std::string>& settings = {}) {
    arguments.insert(arguments.begin(), KEF_CLIENT_DIR "/" + name);
    return run(arguments, settings);
}

// A variable of this process; null takes it away.
void set_environment(const char* name, const char* value);

// A file's path of this process's own, in memory where the system has a place for that.
std::string scratch_file(const std::string& name);

// The file of the shared library that runs.
std::string library();

// What the library exports under a name; null where there is none.
void* exported(const std::string& name);

// An array that ends, or begins, at a page that may not be touched. Null where it is empty.
enum class Guard { before, behind };

class GuardedPages {
public:
    GuardedPages(std::size_t size, Guard guard);
    ~GuardedPages();
    GuardedPages(const GuardedPages&) = delete;
    void* data() const { return first_; }

private:
    std::size_t length_;
    char *base_, *first_;
};

template <class T> class Guarded {
public:
    Guarded(const std::vector<T>& values, Guard guard) : pages_(values.size() * sizeof(T), guard) {
        std::copy(values.begin(), values.end(), data());
    }
    T* data() const { return static_cast<T*>(pages_.data()); }

private:
    GuardedPages pages_;
};

}  // namespace kef_test
