// Arrays in NumPy's format .npy, versions 1 to 3: numbers of one type, in one or two dimensions.
#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>
#include <limits>

#include "numbers.h"
#include "output.h"
#include "table.h"

namespace command {

namespace {

// Of 16 bits: sign, 5 bits of exponent, 10 of the fraction.
struct Half {
    std::uint16_t bits;
    explicit operator double() const {
        const int exponent = bits >> 10 & 31, fraction = bits & 1023;
        const double size = exponent == 31
                                ? (fraction == 0 ? std::numeric_limits<double>::infinity()
                                                 : std::numeric_limits<double>::quiet_NaN())
                            : exponent == 0 ? std::ldexp(fraction, -24)
                                            : std::ldexp(1024 + fraction, exponent - 25);
        return bits >> 15 ? -size : size;
    }
};

template <class T>
void widen(const char* from, std::size_t n, std::size_t stride, bool swap, double* to,
           std::size_t step) {
    for (std::size_t i = 0; i < n; ++i) {
        char bytes[sizeof(T)];
        std::memcpy(bytes, from + i * stride, sizeof(T));
        if (swap) std::reverse(bytes, bytes + sizeof(T));
        T value;
        std::memcpy(&value, bytes, sizeof(T));
        to[i * step] = (double)value;
    }
}

struct Type {
    const char* code;  // behind the byte order
    std::size_t size;
    decltype(&widen<double>) read;
};
const Type types[] = {{"f8", 8, widen<double>},        {"f4", 4, widen<float>},
                      {"f2", 2, widen<Half>},          {"i8", 8, widen<std::int64_t>},
                      {"i4", 4, widen<std::int32_t>},  {"i2", 2, widen<std::int16_t>},
                      {"i1", 1, widen<std::int8_t>},   {"u8", 8, widen<std::uint64_t>},
                      {"u4", 4, widen<std::uint32_t>}, {"u2", 2, widen<std::uint16_t>},
                      {"u1", 1, widen<std::uint8_t>},  {"b1", 1, widen<std::uint8_t>}};

class Array : public Table {
public:
    Array(std::unique_ptr<Input> input, std::string head)
        : Table(std::move(input)), head_(std::move(head)) {
        const auto byte = [&](std::size_t i) { return (std::size_t)(unsigned char)head_[i]; };
        if (head_.size() < 12) refuse("the header is cut off");
        const bool wide = byte(6) > 1;
        if (byte(6) < 1 || byte(6) > 3) refuse("a version of the format that is not known");
        const std::size_t start = wide ? 12 : 10;
        const std::size_t size =
            byte(8) | byte(9) << 8 | (wide ? byte(10) << 16 | byte(11) << 24 : 0);
        if (size > head_.size() - start) refuse("the header is cut off");
        describe(std::string_view(head_).substr(start, size));
        data_ = start + size;
        if (input_->is_file() && input_->size() < data_ + rows_ * columns_.size() * type_->size)
            refuse("cut off: " + std::to_string(input_->size() - data_) +
                   " bytes of data where the header tells of " +
                   std::to_string(rows_ * columns_.size() * type_->size));
        if (by_columns_ && !input_->is_file())
            refuse("an array in Fortran order is read from a file, not from a pipe");
        head_.erase(0, data_);
    }

    bool read(Rows& rows) override {
        rows.clear();
        const std::size_t p = columns_.size(), size = type_->size;
        const std::uint64_t block = std::max<std::uint64_t>(1, (1 << 15) / p);
        const std::size_t n = (std::size_t)std::min(block, rows_ - done_);
        if (n == 0 || interrupted()) return false;
        bytes_.resize(n * p * size);
        if (by_columns_) {
            for (std::size_t i = 0; i < p; ++i)
                if (input_->read_at(bytes_.data() + i * n * size, n * size,
                                    data_ + (i * rows_ + done_) * size) < n * size)
                    return ended(0);
        } else if (const std::size_t got = fill(); got < bytes_.size()) {
            return ended(got / (p * size));
        }
        rows.values.resize(n * selected_.size());
        for (std::size_t i = 0; i < selected_.size(); ++i) {
            const char* first = bytes_.data() + selected_[i] * size * (by_columns_ ? n : 1);
            type_->read(first, n, by_columns_ ? size : p * size, swap_, rows.values.data() + i,
                        selected_.size());
        }
        for (std::size_t k = 0; k < n; ++k) rows.lines.push_back(done_ + k + 1);
        if (by_) {
            std::vector<double> keys(n);
            type_->read(bytes_.data() + *by_ * size * (by_columns_ ? n : 1), n,
                        by_columns_ ? size : p * size, swap_, keys.data(), 1);
            for (const double key : keys) append(rows.keys.emplace_back(), key);
        }
        done_ += n;
        return true;
    }

    std::uint64_t position() const override {
        return data_ + done_ * columns_.size() * type_->size;
    }

private:
    [[noreturn]] void refuse(const std::string& what) const { throw Failure(name() + ": " + what); }

    bool ended(std::uint64_t rows) const {
        if (interrupted()) return false;
        refuse("cut off in row " + std::to_string(done_ + rows + 1));
    }

    std::size_t fill() {
        const std::size_t had = std::min(head_.size(), bytes_.size());
        std::memcpy(bytes_.data(), head_.data(), had);
        head_.erase(0, had);
        return had + input_->read(bytes_.data() + had, bytes_.size() - had);
    }

    // {'descr': '<f8', 'fortran_order': False, 'shape': (100, 3), }
    void describe(std::string_view header) {
        const auto behind = [&](std::string_view key) {
            const auto place = header.find(key);
            if (place == header.npos) refuse("a header without " + std::string(key));
            auto rest = header.substr(place + key.size());
            rest.remove_prefix(std::min(rest.size(), rest.find_first_not_of(" :'")));
            return rest;
        };
        const std::string_view descr = behind("'descr'");
        const std::string code(descr.substr(0, descr.find_first_of("'")));
        const auto found = std::find_if(std::begin(types), std::end(types), [&](const Type& t) {
            return code.size() == 3 && code.substr(1) == t.code;
        });
        if (found == std::end(types) || !std::strchr("<>|=", code[0]))
            refuse("elements of type " + std::string(code.substr(0, 20)) +
                   ", which is none of real numbers");
        type_ = found;
        swap_ = code[0] == (std::endian::native == std::endian::little ? '>' : '<');
        by_columns_ = behind("'fortran_order'").starts_with("True");
        std::string_view shape = behind("'shape'");
        if (!shape.starts_with("(") || shape.find(')') == shape.npos)
            refuse("a header without a shape");
        std::vector<std::uint64_t> extents;
        for (const auto& part : split(shape.substr(1, shape.find(')') - 1)))
            if (part.find_first_not_of(" ") != part.npos) {
                const Reading reading = read_number(part);
                if (!reading.is_number() || !(reading.value >= 0 && reading.value < 0x1p53))
                    refuse("a wrong shape: " + std::string(shape.substr(0, 40)));
                extents.push_back((std::uint64_t)reading.value);
            }
        if (extents.empty() || extents.size() > 2)
            refuse(std::to_string(extents.size()) + " dimensions; one or two are read");
        rows_ = extents[0];
        const std::uint64_t p = extents.size() == 2 ? extents[1] : 1;
        if (rows_ == 0 || p == 0) refuse("no data");
        if (p > 1 << 20 || rows_ > std::numeric_limits<std::uint64_t>::max() / p / type_->size)
            refuse("a wrong shape: " + std::string(shape.substr(0, 40)));
        for (std::uint64_t i = 1; i <= p; ++i) columns_.push_back(std::to_string(i));
        is_number_.assign(p, true);
        if (p == 1) by_columns_ = false;
    }

    std::string head_;
    std::vector<char> bytes_;
    const Type* type_;
    bool swap_, by_columns_;
    std::uint64_t data_ = 0, rows_ = 0, done_ = 0;
};

}  // namespace

std::unique_ptr<Table> open_array(std::unique_ptr<Input> input, std::string head) {
    return std::make_unique<Array>(std::move(input), std::move(head));
}

}  // namespace command
