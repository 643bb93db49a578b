// kef: the library from the command line.
#include <algorithm>
#include <csignal>
#include <cstdio>
#include <new>

#include "command.h"
#include "kef_version.h"
#include "output.h"

namespace {

using namespace command;

const Command* const commands[] = {&stats, &command::random, &spline, &math, &bench, &info};

void print(const std::string& text) {
    Output output;
    output.write(text);
    output.close();
}

std::string usage() {
    std::string text = "usage: kef COMMAND [WORD...]\n\n";
    for (const Command* c : commands) {
        std::string line = "  " + std::string(c->name);
        line.resize(12, ' ');
        text += line + c->summary + "\n";
    }
    return text + "\nkef COMMAND --help tells of its options; kef --version of the version.\n";
}

std::string usage(const Command& c) {
    std::string text =
        "usage: kef " + std::string(c.name) + (c.options.empty() ? "" : " [OPTION...]");
    if (*c.operands != 0) text += " " + std::string(c.operands);
    text += "\n\n" + std::string(c.summary) + "\n";
    if (!c.options.empty()) text += "\n";
    for (const Option& option : c.options) {
        std::string line =
            "  " + std::string(option.name) + (*option.values != 0 ? " " : "") + option.values;
        if (line.size() > 24) line += "\n", text += line, line.clear();
        line.resize(26, ' ');
        text += line + option.help + "\n";
    }
    return text;
}

// Words for the shell to complete: commands, or options and names of one.
std::string words(const std::vector<std::string>& of) {
    std::string text;
    for (const Command* c : commands) {
        if (of.empty()) text += std::string(c->name) + "\n";
        if (of.empty() || of[0] != c->name) continue;
        for (const Option& option : c->options) text += std::string(option.name) + "\n";
        if (c->names != nullptr)
            for (const auto& name : c->names()) text += name + "\n";
    }
    return text;
}

int run(int count, char** given) {
    const std::string name = count > 1 ? given[1] : "";
    if (name == "--help" || name == "-h") return print(usage()), succeeded;
    if (name == "--version") {
        const int version = kef_version();
        print("kef " + std::to_string(version / 10000) + "." + std::to_string(version / 100 % 100) +
              "." + std::to_string(version % 100) + "\n");
        return succeeded;
    }
    if (name == "--words") return print(words({given + 2, given + count})), succeeded;
    if (name.empty()) {
        std::fputs(usage().c_str(), stderr);
        return wrong_use;
    }
    const auto found = std::find_if(std::begin(commands), std::end(commands),
                                    [&](auto c) { return name == c->name; });
    if (found == std::end(commands)) wrong("no command " + name + "; kef --help lists them");
    const Command& chosen = **found;
    running = "kef " + name;
    const std::span<char* const> rest(given + 2, (std::size_t)(count - 2));
    for (const std::string_view word : rest)
        if (word == "--help" || word == "-h") return print(usage(chosen)), succeeded;
    return chosen.run(Arguments(chosen.options, rest));
}

// Ends as a program does that does not know the signal.
int end_by(int signal) {
    std::signal(signal, SIG_DFL);
    std::raise(signal);
    return 128 + signal;
}

}  // namespace

int main(int count, char** given) {
    hold_descriptors();
    watch_signals();
    try {
        return run(count, given);
    } catch (const Failure& failure) {
        say(failure.what());
        return failure.status;
    } catch (const ClosedPipe&) { return end_by(SIGPIPE); } catch (const Interrupted&) {
        say("stopped by a signal; the result, if there is one, is partial");
        return 128 + interrupted();
    } catch (const std::bad_alloc&) {
        say("not enough memory");
        return failed;
    }
}
