#include "table.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <string_view>

#include "numbers.h"
#include "output.h"

namespace command {

Input::Input(const std::string& path) : name_(path), file_(STDIN_FILENO) {
    if (path == "-") name_ = "standard input";
    else file_ = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    struct stat is;
    if (file_ < 0 || fstat(file_, &is) != 0) throw Failure(name_ + ": " + std::strerror(errno));
    is_file_ = S_ISREG(is.st_mode);
    if (is_file_) size_ = (std::uint64_t)is.st_size;
}

Input::~Input() {
    if (file_ > STDIN_FILENO) close(file_);
}

std::size_t Input::read(void* to, std::size_t size) {
    std::size_t got = 0;
    while (got < size && !interrupted()) {
        const ssize_t more = ::read(file_, (char*)to + got, size - got);
        if (more == 0) break;
        if (more > 0) got += (std::size_t)more;
        else if (errno != EINTR) throw Failure(name_ + ": " + std::strerror(errno));
    }
    position_ += got;
    return got;
}

std::size_t Input::read_at(void* to, std::size_t size, std::uint64_t place) {
    if (lseek(file_, (off_t)place, SEEK_SET) < 0)
        throw Failure(name_ + ": " + std::strerror(errno));
    return read(to, size);
}

Start start_of(std::string_view text) {
    Start start{text.starts_with("\xEF\xBB\xBF") ? 3u : 0u, 0};
    while (start.bytes < text.size() &&
           std::string_view("#\r\n").find(text[start.bytes]) != text.npos) {
        const auto end = text.find_first_of("\r\n", start.bytes);
        if (end == text.npos) break;
        start.bytes = end + (text.substr(end, 2) == "\r\n" ? 2 : 1);
        ++start.lines;
    }
    return start;
}

namespace {

// The first record without what stands in quotes.
std::string plain_part(std::string_view head) {
    head.remove_prefix(start_of(head).bytes);
    std::string part;
    bool in_quotes = false;
    for (const char c : head) {
        if (c == '"') in_quotes = !in_quotes;
        else if (!in_quotes && (c == '\n' || c == '\r')) break;
        else if (!in_quotes) part += c;
    }
    return part;
}

char delimiter_of(const std::string& path, const std::string& head, const Arguments& arguments) {
    if (arguments.has("--delimiter")) {
        const std::string given = arguments.text("--delimiter");
        if (given == "tab" || given == "\\t") return '\t';
        if (given.size() != 1 || given == "\"" || given == "\n" || given == "\r")
            wrong("--delimiter: one character, or tab: " + given);
        return given[0];
    }
    if (path.ends_with(".tsv")) return '\t';
    const std::string line = plain_part(head);
    if (path.ends_with(".csv")) {
        // Where a comma is the decimal sign, a semicolon parts the fields.
        return line.find(',') == line.npos && line.find(';') != line.npos ? ';' : ',';
    }
    char best = ',';
    for (const char c : {'\t', ';'})
        if (std::count(line.begin(), line.end(), c) > std::count(line.begin(), line.end(), best))
            best = c;
    return best;
}

}  // namespace

std::unique_ptr<Table> open_table(const std::string& path, const Arguments& arguments) {
    auto input = std::make_unique<Input>(path);
    std::string head(head_size, 0);
    head.resize(input->read(head.data(), head.size()));
    if (head.starts_with("\x93NUMPY")) return open_array(std::move(input), std::move(head));
    std::optional<bool> header;
    if (arguments.has("--header")) {
        const std::string given = arguments.text("--header");
        if (given != "yes" && given != "no") wrong("--header: yes or no: " + given);
        header = given == "yes";
    }
    const char delimiter = delimiter_of(path, head, arguments);
    return open_csv(std::move(input), std::move(head), delimiter, header);
}

std::size_t find_column(const Table& table, const std::string& word) {
    const auto& columns = table.columns();
    const auto found = std::find(columns.begin(), columns.end(), word);
    if (found != columns.end()) return (std::size_t)(found - columns.begin());
    if (!word.empty() && word.find_first_not_of("0123456789") == word.npos) {
        const auto number = count_of(word, "column");
        if (number >= 1 && number <= columns.size()) return number - 1;
    }
    throw Failure(table.name() + ": no column " + word + "; there are: " + joined(columns),
                  wrong_use);
}

std::vector<std::size_t> choose_columns(const Table& table, const Arguments& arguments,
                                        std::optional<std::size_t> but) {
    std::vector<std::size_t> chosen;
    if (arguments.has("--columns")) {
        for (const auto& word : split(arguments.text("--columns")))
            chosen.push_back(find_column(table, word));
        return chosen;
    }
    for (std::size_t i = 0; i < table.columns().size(); ++i) {
        if (i == but) continue;
        if (table.is_number()[i]) chosen.push_back(i);
        else
            say(table.name() + ": column " + table.columns()[i] +
                " is left out: its first value is no number");
    }
    if (chosen.empty()) throw Failure(table.name() + ": no column of numbers");
    return chosen;
}

}  // namespace command
