// Where results go: standard output, or a file that gets its name when it is complete.
#pragma once

#include <string>
#include <string_view>

namespace command {

// Signals that end the program: the command sees interrupted() and cleans up. A second one of the
// same kind ends it at once.
void watch_signals();
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
