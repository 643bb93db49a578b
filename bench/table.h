// A table of text, aligned for a terminal or in Markdown.
#pragma once

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <string>
#include <vector>

namespace kef {

[[gnu::format(printf, 1, 2)]] inline std::string format(const char* text, ...) {
    char buffer[512];
    va_list arguments;
    va_start(arguments, text);
    std::vsnprintf(buffer, sizeof buffer, text, arguments);
    va_end(arguments);
    return buffer;
}

class Table {
public:
    using Row = std::vector<std::string>;
    explicit Table(Row head) : rows_{std::move(head)} {}
    void add(Row row) { rows_.push_back(std::move(row)); }
    bool empty() const { return rows_.size() == 1; }

    // Without its head, a table goes on with the one before it.
    void print(bool markdown, bool head = true) const {
        std::vector<int> width(rows_[0].size());
        for (const Row& row : rows_)
            for (std::size_t i = 0; i < row.size(); ++i)
                width[i] = std::max(width[i], static_cast<int>(row[i].size()));
        for (const Row& row : rows_) {
            if (!head && &row == &rows_[0]) continue;
            for (std::size_t i = 0; i < row.size(); ++i)
                if (markdown) std::printf("| %s ", row[i].c_str());
                else
                    std::printf("%-*s%s", width[i], row[i].c_str(), i + 1 < row.size() ? "  " : "");
            std::puts(markdown ? "|" : "");
            if (!markdown || &row != &rows_[0]) continue;
            for (std::size_t i = 0; i < row.size(); ++i) std::printf("|---");
            std::puts("|");
        }
        std::fflush(stdout);
    }

private:
    std::vector<Row> rows_;
};

}  // namespace kef
