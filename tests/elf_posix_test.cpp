// The library's file as other systems' tools see it, and programs that copy a table out of it.
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <map>
#include <regex>
#include <set>
#include <sstream>

#include "include/kef_version.h"
#include "tests/rows.h"
#include "tests/system.h"

namespace kef_test {
namespace {

TEST(Surface, ClientsWithAnOwnCopyOfATable) {
    for (const char* client : {"slots_fixed", "slots_pie", "slots_static"}) {
        const Outcome outcome = run_client(client);
        EXPECT_EQ(outcome.exit_code, 0) << client << ": " << outcome.err;
    }
    EXPECT_EQ(run_client("slots_fixed").out, "own copy\n");
}

#if !defined(KEF_SANITIZE) && !defined(KEF_STATIC)

// The printed lines of a command that has to succeed.
std::vector<std::string> lines_of(const std::vector<std::string>& command) {
    const Outcome outcome = run(command, {"LC_ALL=C"});
    EXPECT_EQ(outcome.exit_code, 0) << command[0] << ": " << outcome.err;
    std::istringstream stream(outcome.out);
    std::vector<std::string> lines;
    for (std::string line; std::getline(stream, line);) lines.push_back(line);
    return lines;
}

// Every name that the public headers declare.
std::set<std::string> declared_names() {
    std::vector<std::string> command = {"gcc", "-E", "-P", "-x", "c"};
    for (const auto& header : std::filesystem::directory_iterator(KEF_SOURCE_DIR "/include"))
        if (header.path().extension() == ".h" &&
            header.path().filename() != "kef_vm_functions.h")  // part of kef_vm.h
            command.insert(command.end(), {"-include", header.path()});
    command.push_back("/dev/null");
    std::string all;
    for (const std::string& line : lines_of(command)) all += line + "\n";

    std::set<std::string> names;
    const std::regex declaration(R"(visibility\("default"\)\)\)\s[^;{(]*?(\w+)\s*[(\[;])");
    for (std::sregex_iterator i(all.begin(), all.end(), declaration), end; i != end; ++i)
        names.insert((*i)[1]);
    return names;
}

// What compatible libraries have in common.
const std::string interface =
    std::to_string(KEF_VERSION_MAJOR) + "." + std::to_string(KEF_VERSION_MINOR);

TEST(Surface, ExportsWhatTheHeadersDeclareAndNoMore) {
    // All of one version, which is a name of its own.
    const std::string version = "KEF_" + interface;
    std::set<std::string> exported;
    for (const std::string& line : lines_of({"nm", "-D", "--defined-only", library()})) {
        const std::string name = line.substr(line.rfind(' ') + 1);
        if (name == version) continue;
        const std::size_t end = name.find("@@");
        EXPECT_EQ(name.substr(std::min(end, name.size())), "@@" + version) << name;
        exported.insert(name.substr(0, end));
    }
    EXPECT_EQ(exported, declared_names());
    EXPECT_GT(exported.size(), rows().size() * 6 + 20);
}

// Instructions whose bits differ among makers of processors: estimates of reciprocals, and the
// functions of the x87 unit.
TEST(Surface, EveryInstructionGivesTheSameBitsOnEveryProcessor) {
    const std::regex estimates(R"(\t(v?rcp|v?rsqrt|fsin|fcos|fptan|fpatan|f2xm1|fyl2x))");
    std::size_t count = 0;
    for (const std::string& line : lines_of({"objdump", "-d", "--no-show-raw-insn", library()})) {
        EXPECT_FALSE(std::regex_search(line, estimates)) << line;
        count += line.find("mulp") != line.npos;
    }
    EXPECT_GT(count, 1000u);  // it was a disassembly
}

// A double that a kernel's helper returned by value on i386 would pass through the x87 unit: a
// subnormal one traps there under the caller's masks, a signalling NaN loses its bit.
TEST(Surface, KernelsLeaveTheX87UnitAlone) {
    const std::regex kernel(R"(<_ZN?K?3kef2vm\w*[^>]*>:$)"), x87(R"(\tf[a-z])");
    std::string function;
    int kernels = 0;
    for (const std::string& line : lines_of({"objdump", "-d", "--no-show-raw-insn", library()}))
        if (line.ends_with(">:")) {
            function = std::regex_search(line, kernel) ? line : "";
            kernels += !function.empty();
        } else if (!function.empty()) {
            EXPECT_FALSE(std::regex_search(line, x87)) << function << line;
        }
    EXPECT_GT(kernels, 300);  // the library has its symbols
}

TEST(Surface, EntriesAreBareJumps) {
    std::map<std::uintptr_t, std::vector<std::string>> code;
    std::vector<std::string>* current = nullptr;
    for (const std::string& line :
         lines_of({"objdump", "-d", "--no-show-raw-insn", "-j", ".text", library()})) {
        if (line.ends_with(">:")) current = &code[std::stoul(line, nullptr, 16)];
        else if (current != nullptr && line.find('\t') != line.npos)
            current->push_back(line.substr(line.find('\t') + 1));
    }
    Dl_info library;
    ASSERT_NE(dladdr(reinterpret_cast<void*>(rows()[0].entries[0]), &library), 0);
    const auto base = reinterpret_cast<std::uintptr_t>(library.dli_fbase);
    const auto matches = [](const std::string& text, const char* pattern) {
        return std::regex_search(text, std::regex(pattern));
    };
    for (const Row& row : rows())
        for (Code entry : row.entries) {
            SCOPED_TRACE(row.name());
            auto found = code.find(reinterpret_cast<std::uintptr_t>(entry) - base);
            ASSERT_NE(found, code.end());
            auto& body = found->second;
            while (!body.empty() && matches(body.back(), "^(xchg|nop|lea +0x0|cs nop|data16)"))
                body.pop_back();
            int calls = 0, frames = 0;
            for (const std::string& line : body) {
                calls += matches(line, "^call") && !matches(line, "get_pc_thunk");
                frames += matches(line, "^(push|sub .*[er]sp|and .*[er]sp|mov .*,%[er]bp)");
            }
            // The forwarders of Pack and Unpack have one more argument to pass; that of zPowx hands
            // on a copy of its arguments.
            const bool copies = row.name() == "zPowx" && entry == row.entries[3];
            if (copies || !(row.element_wise() || sizeof(void*) == 8)) {
                EXPECT_EQ(calls, 1);
            } else {
                EXPECT_EQ(calls, 0);
                EXPECT_EQ(frames, 0);
                EXPECT_TRUE(matches(body.back(), R"(^(notrack )?jmp +\*)")) << body.back();
            }
        }
}

TEST(Surface, FileNeedsTheCLibraryAlone) {
    // The tags of the dynamic section: NEEDED, SONAME and so on.
    std::multimap<std::string, std::string> dynamic;
    std::smatch match;
    for (const std::string& line : lines_of({"readelf", "-dW", library()}))
        if (std::regex_search(line, match, std::regex(R"(\((\w+)\)\s+(?:.*\[)?([^\]]*))")))
            dynamic.emplace(match[1], match[2]);
    ASSERT_EQ(dynamic.count("NEEDED"), 1u);
    EXPECT_EQ(dynamic.find("NEEDED")->second, "libc.so.6");
    ASSERT_EQ(dynamic.count("SONAME"), 1u);
    EXPECT_EQ(dynamic.find("SONAME")->second, "libkef.so." + interface);
    EXPECT_EQ(dynamic.count("TEXTREL"), 0u);
    // Relocations are done and their places read-only before the first call.
    ASSERT_EQ(dynamic.count("FLAGS"), 1u);
    EXPECT_EQ(dynamic.find("FLAGS")->second, "BIND_NOW");  // and not STATIC_TLS
    std::string segments;
    for (const std::string& line : lines_of({"readelf", "-lW", library()})) segments += line + "\n";
    EXPECT_NE(segments.find("GNU_RELRO"), segments.npos);
    EXPECT_FALSE(std::regex_search(segments, std::regex("GNU_STACK.* RWE ")));
    // No initialiser runs at load but the C library's own, the process attach and the handlers of
    // fork.
    std::smatch size;
    for (const std::string& line : lines_of({"readelf", "-SW", library()}))
        if (std::regex_search(line, size, std::regex(R"(\.init_array\s+\w+\s+\w+\s+\w+\s+(\w+))")))
            EXPECT_EQ(std::stoul(size[1], nullptr, 16), 3 * sizeof(void*));
}

TEST(Surface, TableSizes) {
    int tables = 0;
    std::smatch match;
    const std::regex symbol(R"((\d+) OBJECT +GLOBAL DEFAULT +\d+ kef_vtm_kernel_\w+_(.)tab)");
    for (const std::string& line : lines_of({"readelf", "--dyn-syms", "-W", library()}))
        if (std::regex_search(line, match, symbol)) {
            ++tables;
            const int whole = sizeof(void*) == 4 ? 24 : 40;
            EXPECT_EQ(std::stoi(match[1]), match[2] == "t" ? whole : 12) << line;
        }
    EXPECT_EQ(tables, static_cast<int>(2 * rows().size()));
}

#endif

}  // namespace
}  // namespace kef_test
