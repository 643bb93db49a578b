// Where results go: standard output, or a file that gets its name when it is complete.
#pragma once

#include <string>
#include <string_view>

namespace command {

// Signals that end the program: the command sees interrupted() and cleans up. One that comes a
// second later or more ends it at once; sooner it is the same one, sent to the process and to its
// group.
void watch_signals();
// Standard descriptors that are closed are taken up, and fail whoever reads or writes: what is
// opened later is none of them.
void hold_descriptors();
int interrupted();  // the signal, or 0

// The reader of standard output has gone.
struct ClosedPipe {};
// A signal came in the midst of a write.
struct Interrupted {};

class Output {
public:
    // "" or "-" is standard output. A regular file is written under another name beside it until it
    // is closed; without that nothing is left of it. Devices and pipes are written to directly.
    explicit Output(const std::string& path = "");
    Output(const Output&) = delete;
    ~Output();

    void write(std::string_view bytes);  // Failure, ClosedPipe or Interrupted
    void close();

private:
    void write_all(std::string_view bytes);

    std::string path_, temporary_, buffer_;
    int file_;
};

}  // namespace command
