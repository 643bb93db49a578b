// How far a command is, on a terminal.
#pragma once

#include <chrono>
#include <string>

namespace command {

// A line on standard error with a bar, the share that is done and an estimate of the time left;
// none where standard error is no terminal. A total of 0 is not known:
// then what is done are bytes.
class Progress {
public:
    Progress(std::string what, double total);
    ~Progress();
    void at(double done);
    void clear();  // before a message

private:
    using clock = std::chrono::steady_clock;
    std::string what_;
    double total_;
    bool shown_, drawn_ = false;
    clock::time_point start_, next_;
};

}  // namespace command
