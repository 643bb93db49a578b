#include "output.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <filesystem>

#include "command.h"

namespace command {

namespace {

volatile std::sig_atomic_t signal_seen = 0;
timespec first_seen;  // when

void note_signal(int signal) {
    timespec now;
    clock_gettime(CLOCK_MONOTONIC, &now);
    if (signal_seen == 0) {
        first_seen = now;
        signal_seen = signal;
    } else if (now.tv_sec - first_seen.tv_sec > (now.tv_nsec < first_seen.tv_nsec)) {
        std::signal(signal, SIG_DFL);
        raise(signal);
    }
}

}  // namespace

int interrupted() { return signal_seen; }

void watch_signals() {
    struct sigaction action = {};
    action.sa_handler = note_signal;  // no SA_RESTART: reads and writes return
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        struct sigaction before;
        sigaction(signal, nullptr, &before);
        if (before.sa_handler != SIG_IGN) sigaction(signal, &action, nullptr);
    }
    // Errors of the write that meets them.
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
}

void hold_descriptors() {
    for (const int file : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
        if (fcntl(file, F_GETFD) < 0 && errno == EBADF)
            open("/dev/null", file == STDIN_FILENO ? O_WRONLY : O_RDONLY);
}

Output::Output(const std::string& path) : path_(path), file_(STDOUT_FILENO) {
    if (path_.empty() || path_ == "-") {
        path_ = "standard output";
        return;
    }
    struct stat is;
    const bool exists = stat(path_.c_str(), &is) == 0;
    if (!exists && errno != ENOENT) throw Failure(path_ + ": " + std::strerror(errno));
    if (exists && !S_ISREG(is.st_mode)) {
        file_ = open(path_.c_str(), O_WRONLY | O_CLOEXEC);
    } else {
        // The file goes where a link points to, whether there is one or not; the link stays.
        std::filesystem::path place = path_;
        std::error_code none;
        while (std::filesystem::is_symlink(std::filesystem::symlink_status(place, none)))
            place = place.parent_path() / std::filesystem::read_symlink(place);
        path_ = place;
        temporary_ = path_ + ".XXXXXX";
        file_ = mkostemp(temporary_.data(), O_CLOEXEC);
        if (file_ < 0) {
            temporary_.clear();
        } else {
            const mode_t mask = umask(0);
            umask(mask);
            fchmod(file_, exists ? is.st_mode & 0777 : 0666 & ~mask);
        }
    }
    if (file_ < 0) throw Failure(path_ + ": " + std::strerror(errno));
}

Output::~Output() {
    if (file_ != STDOUT_FILENO) ::close(file_);
    if (!temporary_.empty()) unlink(temporary_.c_str());
}

void Output::write(std::string_view bytes) {
    constexpr std::size_t block = 1 << 16;
    if (buffer_.size() + bytes.size() < block) {
        buffer_ += bytes;
        return;
    }
    write_all(buffer_);
    buffer_.clear();
    write_all(bytes);
}

void Output::write_all(std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t written = ::write(file_, bytes.data(), bytes.size());
        if (written >= 0) {
            bytes.remove_prefix((std::size_t)written);
        } else if (errno == EPIPE) {
            throw ClosedPipe();
        } else if (errno != EINTR) {
            throw Failure(path_ + ": " + std::strerror(errno));
        } else if (interrupted()) {
            throw Interrupted();
        }
    }
}

void Output::close() {
    write_all(buffer_);
    buffer_.clear();
    if (file_ == STDOUT_FILENO) return;
    // A file system may tell of a full disk only now.
    const bool on_disk = temporary_.empty() || fsync(file_) == 0;
    const bool complete = ::close(file_) == 0 && on_disk;
    file_ = STDOUT_FILENO;
    if (!complete || (!temporary_.empty() && rename(temporary_.c_str(), path_.c_str()) != 0))
        throw Failure(path_ + ": " + std::strerror(errno));
    temporary_.clear();
}

}  // namespace command
