// Data files: columns of numbers, read in blocks of rows.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "command.h"

namespace command {

struct Rows {
    std::vector<double> values;        // row by row; NaN where a value is missing
    std::vector<std::string> keys;     // text of the column `by`, one a row
    std::vector<std::uint64_t> lines;  // where each row begins; rows of an array count from 1
    std::size_t size() const { return lines.size(); }
    void clear() { values.clear(), keys.clear(), lines.clear(); }
};

// A file or standard input as bytes.
class Input {
public:
    explicit Input(const std::string& path);  // "-" is standard input
    ~Input();
    Input(const Input&) = delete;

    // As many bytes as there are up to size; 0 at the end, and once a signal came.
    std::size_t read(void* to, std::size_t size);
    // The same from a place in the file.
    std::size_t read_at(void* to, std::size_t size, std::uint64_t place);

    const std::string& name() const { return name_; }
    std::uint64_t size() const { return size_; }  // 0: not known
    std::uint64_t position() const { return position_; }
    bool is_file() const { return is_file_; }

private:
    std::string name_;
    int file_;
    bool is_file_ = false;
    std::uint64_t size_ = 0, position_ = 0;
};

class Table {
public:
    explicit Table(std::unique_ptr<Input> input) : input_(std::move(input)) {}
    virtual ~Table() = default;

    const std::string& name() const { return input_->name(); }
    const std::vector<std::string>& columns() const { return columns_; }
    // Where a column of words is left out when none is named.
    const std::vector<bool>& is_number() const { return is_number_; }

    // Which columns are read, in that order, and which one gives the keys.
    void select(std::vector<std::size_t> columns, std::optional<std::size_t> by = {}) {
        selected_ = std::move(columns);
        by_ = by;
    }
    // The next rows; false at the end, and once a signal came.
    virtual bool read(Rows& rows) = 0;

    std::uint64_t size() const { return input_->size(); }
    virtual std::uint64_t position() const { return input_->position(); }

protected:
    std::unique_ptr<Input> input_;
    std::vector<std::string> columns_;
    std::vector<bool> is_number_;
    std::vector<std::size_t> selected_;
    std::optional<std::size_t> by_;
};

// The options by which a command reads a table, and the table that they describe.
#define KEF_TABLE_OPTIONS                                                          \
    {"--columns", "LIST", "these columns, by name or number, in this order"},      \
        {"--delimiter", "CHAR", "what parts the fields: one character, or tab"}, { \
        "--header", "yes|no", "whether the first row names the columns"            \
    }
std::unique_ptr<Table> open_table(const std::string& path, const Arguments&);

// A field as it stands in a file, in quotes where it needs them.
std::string quoted(std::string_view field);

// By its name or, where no column has that name, by its number from 1 up.
std::size_t find_column(const Table&, const std::string& word);
// Those of --columns, or all that hold numbers but one.
std::vector<std::size_t> choose_columns(const Table&, const Arguments&,
                                        std::optional<std::size_t> but = {});

// What is read before the kind of a file is known: all of it where there is less.
constexpr std::size_t head_size = 1 << 18;

// What stands before the first record of a text: a byte order mark, empty lines, comments.
struct Start {
    std::size_t bytes;
    std::uint64_t lines;
};
Start start_of(std::string_view text);

// The two kinds.
std::unique_ptr<Table> open_array(std::unique_ptr<Input>, std::string head);
std::unique_ptr<Table> open_csv(std::unique_ptr<Input>, std::string head, char delimiter,
                                std::optional<bool> header);

}  // namespace command
