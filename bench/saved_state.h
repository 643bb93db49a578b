// State of a long run in a file, from which the run goes on when it was stopped. It
// belongs to the machine code that was measured: with other code it starts anew.
#pragma once

#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include "tests/rows.h"

namespace kef {

// FNV-1a.
inline std::uint64_t hash_file(const std::filesystem::path& path, std::uint64_t hash) {
    if (std::FILE* file = std::fopen(path.string().c_str(), "rb")) {
        for (int c; (c = std::getc(file)) != EOF;)
            hash = (hash ^ static_cast<unsigned>(c)) * 0x100000001B3u;
        std::fclose(file);
    }
    return hash;
}

// The object files that a function's kernels consist of: its own, found by the name without
// underscores, and those of the tables. So a change elsewhere costs no run.
inline std::uint64_t code_hash(const kef_test::Row& row) {
    namespace fs = std::filesystem;
    std::string wanted = row.function;
    for (char& c : wanted) c = static_cast<char>(std::tolower(c));
    // One file may hold several complex functions.
    const bool complex = row.type == 'c' || row.type == 'z';
    const std::string_view kernels = complex ? "/complex" : "/real";
    std::vector<fs::path> objects;
    bool found = false;
    for (const char* folder : {"/real", "/core", "/complex"}) {
        if (folder == std::string_view("/complex") && !complex) continue;
        const fs::path path = KEF_BUILD_DIR "/CMakeFiles/kef.dir/vm" + std::string(folder);
        if (!fs::is_directory(path)) continue;
        for (const fs::directory_entry& entry : fs::directory_iterator(path)) {
            std::string stem = entry.path().stem().stem().string();
            std::erase(stem, '_');
            const bool own = folder == kernels && (complex || stem == wanted);
            found |= own;
            if (own || folder == std::string_view("/core")) objects.push_back(entry.path());
        }
    }
    if (!found) {
        std::fprintf(stderr, "%s: no object file of the kernels\n", row.name().c_str());
        std::exit(1);
    }
    std::sort(objects.begin(), objects.end());
    std::uint64_t hash = 0xCBF29CE484222325u;
    for (const fs::path& object : objects) hash = hash_file(object, hash);
    return hash;
}

// How far a run is, on a terminal: one line, written over; the caller ends it.
inline void show_progress(const std::string& line) {
    static const bool terminal = isatty(STDERR_FILENO) == 1;
    if (terminal) std::fputs(line.c_str(), stderr);
}

// `State` is plain data with a member `code`; it is saved as it stands. `plan` changes with what a
// run does.
template <class State> class SavedState {
    static_assert(std::is_trivially_copyable_v<State>);

public:
    SavedState(const std::string& path, const kef_test::Row& row, std::uint64_t plan)
        : path_(path) {
        const std::uint64_t code = code_hash(row) + plan;
        if (std::FILE* file = std::fopen(path_.c_str(), "rb")) {
            if (std::fread(state.get(), sizeof(State), 1, file) != 1 || state->code != code)
                *state = State();
            std::fclose(file);
        }
        state->code = code;
    }

    void save() const {
        const std::string draft = path_ + ".new";
        std::FILE* file = std::fopen(draft.c_str(), "wb");
        const bool written = file && std::fwrite(state.get(), sizeof(State), 1, file) == 1;
        if (!file || std::fclose(file) != 0 || !written ||
            std::rename(draft.c_str(), path_.c_str()) != 0) {
            std::fprintf(stderr, "\ncannot write %s\n", path_.c_str());
            std::exit(1);
        }
    }

    std::unique_ptr<State> state = std::make_unique<State>();

private:
    std::string path_;
};

}  // namespace kef
