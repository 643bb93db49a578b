// Fields between delimiters, by libcsv.
#include <csv.h>

#include <algorithm>
#include <cstring>

#include "numbers.h"
#include "output.h"
#include "table.h"

namespace command {

namespace {

// A record may not be longer: a quote without its fellow would take in the rest of the file.
constexpr std::size_t longest_field = 1 << 20;

// The fields of records with the lines where they begin, one after another. What libcsv calls back
// may not throw: the first problem is kept and what follows it is dropped.
class Records {
public:
    Records(const std::string& name, char delimiter) : name_(name) {
        csv_init(&parser_, CSV_STRICT | CSV_STRICT_FINI | CSV_REPALL_NL | CSV_APPEND_NULL);
        csv_set_delim(&parser_, (unsigned char)delimiter);
    }
    virtual ~Records() { csv_free(&parser_); }
    Records(const Records&) = delete;

    void parse(std::string_view bytes) {
        if (csv_parse(&parser_, bytes.data(), bytes.size(), on_field, on_row, this) != bytes.size())
            complain(csv_error(&parser_) == CSV_EPARSE
                         ? "a quote in the midst of a field, or text behind a quoted one"
                         : csv_strerror(csv_error(&parser_)),
                     here());
        if (parser_.entry_pos > longest_field)
            complain("a field of more than 1 MiB: a quote without its fellow?", here());
        if (!problem_.empty()) throw Failure(problem_);
    }
    void finish() {
        if (csv_fini(&parser_, on_field, on_row, this) != 0)
            complain("the file ends within a quoted field that begins here", here());
        if (!problem_.empty()) throw Failure(problem_);
    }
    std::uint64_t line = 1;  // of the record that is read

protected:
    virtual void field(std::size_t column, std::string_view text) = 0;
    virtual void row(std::size_t fields) = 0;
    void complain(const std::string& what, std::string_view column = "") {
        if (!problem_.empty()) return;
        problem_ = name_ + ":" + std::to_string(line) + ": ";
        if (!column.empty()) problem_.append(column) += ": ";
        problem_ += what;
    }

private:
    std::string here() const { return "column " + std::to_string(fields_ + 1); }
    static void on_field(void* text, std::size_t size, void* self_) {
        auto& self = *(Records*)self_;
        const std::string_view field((const char*)text, size);
        if (self.problem_.empty()) self.field(self.fields_, field);
        ++self.fields_;
        self.inner_lines_ += (std::uint64_t)std::count(field.begin(), field.end(), '\n');
    }
    // At every line end outside quotes, of empty lines too.
    static void on_row(int end, void* self_) {
        auto& self = *(Records*)self_;
        if (self.fields_ > 0 && self.problem_.empty()) self.row(self.fields_);
        self.fields_ = 0;
        if (!(end == '\n' && self.after_return_)) self.line += 1 + self.inner_lines_;
        self.inner_lines_ = 0;
        self.after_return_ = end == '\r';
    }

    std::string name_, problem_;
    csv_parser parser_;
    std::size_t fields_ = 0;
    std::uint64_t inner_lines_ = 0;
    bool after_return_ = false;
};

// The first records as they stand, to tell names from numbers.
class Preview : public Records {
public:
    using Records::Records;
    std::vector<std::vector<std::string>> rows{{}};

private:
    void field(std::size_t, std::string_view text) override { rows.back().emplace_back(text); }
    void row(std::size_t) override { rows.emplace_back(); }
};

class Csv : public Table, private Records {
public:
    Csv(std::unique_ptr<Input> input, std::string head, char delimiter, std::optional<bool> header)
        : Table(std::move(input)), Records(name(), delimiter), head_(std::move(head)) {
        const bool whole = head_.size() < head_size;
        if (head_.find('\0') != head_.npos)
            throw Failure(name() +
                          ": null bytes: no text (an archive, numbers, or text in UTF-16)");
        const Start start = start_of(head_);
        line += start.lines;
        head_.erase(0, start.bytes);
        if (head_.starts_with('#'))
            throw Failure(name() + ": a comment of more than 256 KiB, or nothing else");
        Preview preview(name(), delimiter);
        preview.line = line;
        preview.parse(head_);
        if (whole && !interrupted()) preview.finish();
        auto& rows = preview.rows;
        rows.pop_back();  // nothing, or not complete
        if (rows.empty() && interrupted()) throw Interrupted();
        if (rows.empty())
            throw Failure(name() + (whole ? ": no data" : ": a first row of more than 256 KiB"));
        skip_first_ = header.value_or(!std::all_of(rows[0].begin(), rows[0].end(), is_value));
        if (skip_first_) columns_ = rows[0];
        else
            for (std::size_t i = 1; i <= rows[0].size(); ++i) columns_.push_back(std::to_string(i));
        // Words are what the first value that is there says.
        for (std::size_t i = 0; i < columns_.size(); ++i) {
            bool number = true;
            for (std::size_t r = skip_first_; r < rows.size(); ++r) {
                if (i >= rows[r].size()) continue;
                const auto kind = read_number(rows[r][i]).kind;
                if (kind == Reading::missing) continue;
                number = kind != Reading::malformed;
                break;
            }
            is_number_.push_back(number);
        }
    }

    bool read(Rows& rows) override {
        rows.clear();
        if (places_.empty()) begin();
        rows_ = &rows;
        while (rows.size() == 0 && !finished_) {
            if (head_.empty()) {
                if (interrupted()) return false;
                head_.resize(head_size);
                head_.resize(input_->read(head_.data(), head_.size()));
            }
            if (!head_.empty()) {
                parse(head_);
                head_.clear();
            } else if (!interrupted()) {
                finish();
                finished_ = true;
            }
        }
        return rows.size() > 0;
    }

private:
    static bool is_value(const std::string& text) {
        return read_number(text).kind != Reading::malformed;
    }

    // Where the fields of a record go.
    void begin() {
        places_.assign(columns_.size(), {});
        for (std::size_t i = 0; i < selected_.size(); ++i) places_[selected_[i]].push_back(i);
        record_.resize(selected_.size());
    }

    void field(std::size_t column, std::string_view text) override {
        if (skip_first_ || column >= columns_.size()) return;
        if (column == by_) key_ = text;
        if (places_[column].empty()) return;
        const Reading reading = read_number(text);
        if (reading.kind >= Reading::malformed)
            complain(complaint(reading.kind, text),
                     "column " + std::to_string(column + 1) +
                         (columns_[column] == std::to_string(column + 1)
                              ? ""
                              : " (" + columns_[column] + ")"));
        for (const auto place : places_[column]) record_[place] = reading.value;
    }

    void row(std::size_t fields) override {
        if (fields != columns_.size())
            return complain(std::to_string(fields) + (fields == 1 ? " field" : " fields") +
                            " where the first row has " + std::to_string(columns_.size()));
        if (skip_first_) {
            skip_first_ = false;
            return;
        }
        rows_->values.insert(rows_->values.end(), record_.begin(), record_.end());
        if (by_) rows_->keys.push_back(key_);
        rows_->lines.push_back(line);
    }

    std::string head_, key_;  // what was read and is not parsed yet
    bool skip_first_, finished_ = false;
    std::vector<std::vector<std::size_t>> places_;
    std::vector<double> record_;
    Rows* rows_ = nullptr;
};

}  // namespace

std::string quoted(std::string_view field) {
    if (field.find_first_of(",;\t\"\r\n") == field.npos) return std::string(field);
    std::string text(2 * field.size() + 2, 0);
    text.resize(csv_write(text.data(), text.size(), field.data(), field.size()));
    return text;
}

std::unique_ptr<Table> open_csv(std::unique_ptr<Input> input, std::string head, char delimiter,
                                std::optional<bool> header) {
    return std::make_unique<Csv>(std::move(input), std::move(head), delimiter, header);
}

}  // namespace command
