// kef random: numbers of any law from any generator, to a file or a pipe.
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>
#include <memory>

#include "command.h"
#include "kef_rng.h"
#include "laws.h"
#include "numbers.h"
#include "output.h"
#include "progress.h"

namespace command {

namespace {

// Elements of a draw. Laws by rejection depend on how the numbers are parted into draws, so every
// draw is a whole one, whatever the count and the format: the first k numbers are always the same.
constexpr std::size_t draw_elements = 1 << 14;

void check(std::int32_t status) {
    if (status == VTS_STATUS_NO_MEMORY) throw std::bad_alloc();
    if (status < 0) throw Failure(kef_vts_status_text(status));
}

struct Stream {
    kef_stream* stream = nullptr;
    ~Stream() { __vtsDeleteStream(&stream); }
};

std::string described(const Parameter& parameter) {
    std::string text = parameter.name;
    for (char& c : text) c = (char)std::toupper((unsigned char)c);
    if (std::isnan(parameter.otherwise)) return text;
    return "[" + text + "=" + rounded(parameter.otherwise) + "]";
}

int list() {
    std::string text =
        "Laws and their parameters; methods, the first one is taken unless another is named:\n";
    for (const Law& law : laws) {
        std::string line = "  " + std::string(law.name);
        for (const auto& parameter : law.parameters) line += " " + described(parameter);
        if (line.size() > 36) text += line + "\n", line.clear();
        line.resize(38, ' ');
        line += law.help;
        for (const char* method : law.methods)
            line += std::string(method == law.methods[0] ? "; " : ", ") + method;
        text += line + "\n";
    }
    text += "Generators:\n";
    for (const Generator& generator : generators) {
        std::string line = "  " + std::string(generator.name);
        line.resize(14, ' ');
        text += line + generator.help + "\n";
    }
    Output output;
    output.write(text);
    output.close();
    return succeeded;
}

const Law& find_law(const std::string& name) {
    const auto law =
        std::find_if(laws.begin(), laws.end(), [&](const Law& l) { return name == l.name; });
    if (law == laws.end()) wrong("no law " + name + "; kef random --list tells of them");
    return *law;
}

// Parameters in their order or as name=value.
struct Values {
    std::vector<double> p;
    std::vector<std::vector<double>> lists;
};

Values values_of(const Law& law, std::vector<std::string> words) {
    const auto& parameters = law.parameters;
    std::vector<std::string> texts(parameters.size());
    std::size_t next = 0;
    for (const std::string& word : words) {
        const auto equals = word.find('=');
        std::size_t place = next;
        if (equals != word.npos) {
            const std::string name = word.substr(0, equals);
            place = 0;
            while (place < parameters.size() && name != parameters[place].name) ++place;
            if (place == parameters.size())
                wrong(std::string(law.name) + " has no parameter " + name);
        } else {
            ++next;
        }
        if (place >= parameters.size())
            wrong(std::string(law.name) + " takes " + std::to_string(parameters.size()) +
                  " parameters: " + word);
        if (!texts[place].empty()) wrong(std::string(parameters[place].name) + " is given twice");
        texts[place] = equals == word.npos ? word : word.substr(equals + 1);
    }
    Values values;
    for (std::size_t i = 0; i < parameters.size(); ++i) {
        const Parameter& parameter = parameters[i];
        const std::string name = std::string(law.name) + ": " + parameter.name;
        const auto value = [&](const std::string& text) {
            const double x = number_of(text, name);
            if (!holds(parameter.domain, x))
                wrong(name + " = " + text + ": " + words_of(parameter.domain) + " is wanted");
            return x;
        };
        if (texts[i].empty() && std::isnan(parameter.otherwise)) wrong(name + " is not given");
        auto& list = values.lists.emplace_back();
        if (parameter.domain == Domain::list || parameter.domain == Domain::means) {
            for (const auto& part : split(texts[i])) list.push_back(value(part));
            values.p.push_back(0);
        } else {
            values.p.push_back(texts[i].empty() ? parameter.otherwise : value(texts[i]));
        }
    }
    if (law.problem != nullptr)
        if (const char* problem = law.problem(values.p.data()))
            wrong(std::string(law.name) + ": " + problem);
    return values;
}

// The lower triangle by rows, as a full matrix.
std::vector<double> full_factor(const std::vector<double>& triangle, std::size_t p) {
    if (p > 1000) wrong("vectors: mean: more than 1000 numbers");
    if (triangle.size() != p * (p + 1) / 2)
        wrong("vectors: factor: " + std::to_string(p * (p + 1) / 2) +
              " numbers are wanted, the lower triangle of a " + std::to_string(p) + " by " +
              std::to_string(p) + " matrix by rows");
    std::vector<double> full(p * p);
    for (std::size_t i = 0, k = 0; i < p; ++i)
        for (std::size_t j = 0; j <= i; ++j) full[i * p + j] = triangle[k++];
    return full;
}

void open_stream(Stream& stream, const Arguments& arguments) {
    const std::string given = arguments.text("--generator", "mt19937");
    const auto parts = split(given, ':');
    const auto found = std::find_if(generators.begin(), generators.end(),
                                    [&](const Generator& g) { return parts[0] == g.name; });
    if (found == generators.end() || parts.size() > 2)
        wrong("--generator: no generator " + given + "; kef random --list tells of them");
    std::int32_t id = found->id;
    if (parts.size() == 2) {
        const auto sub = count_of(parts[1], "--generator");
        if (sub >= (std::uint64_t)found->streams)
            wrong("--generator: " + parts[0] + " has the numbers 0 to " +
                  std::to_string(found->streams - 1));
        id += (std::int32_t)sub;
    }
    std::vector<std::uint32_t> seed;
    if (arguments.has("--seed"))
        for (const auto& word : split(arguments.text("--seed"))) {
            const auto value = count_of(word, "--seed");
            if (value >> 32 != 0) wrong("--seed: words of 32 bits, parted by commas: " + word);
            seed.push_back((std::uint32_t)value);
        }
    if (found->dimensions != 0 && seed.size() == 1 && (seed[0] < 1 || seed[0] > found->dimensions))
        wrong("--seed: " + std::string(found->name) + " has the dimensions 1 to " +
              std::to_string(found->dimensions));
    check(__vtsNewStreamEx(&stream.stream, id, (std::int32_t)seed.size(), seed.data()));
    if (const auto skip = arguments.count("--skip", 0)) {
        const auto status = __vtsSkipAheadStream(stream.stream, skip);
        if (status == VTS_STATUS_NO_SKIPAHEAD)
            wrong("--skip: " + std::string(found->name) + " cannot skip");
        check(status);
    }
}

template <class T, class Put> void each(const void* from, std::size_t n, Put put) {
    for (std::size_t i = 0; i < n; ++i) {
        T value;
        std::memcpy(&value, (const char*)from + i * sizeof(T), sizeof(T));
        put(value);
    }
}

template <class Put> void each(Element element, const void* from, std::size_t n, Put put) {
    switch (element) {
        case Element::real: return each<double>(from, n, put);
        case Element::integer: return each<std::int32_t>(from, n, put);
        case Element::word32: return each<std::uint32_t>(from, n, put);
        case Element::word64: return each<std::uint64_t>(from, n, put);
    }
}

int run(const Arguments& arguments) {
    if (arguments.has("--list")) return list();
    if (arguments.words.empty()) wrong("a law is wanted; kef random --list tells of them");
    const Law& law = find_law(arguments.words[0]);
    const Values values = values_of(law, {arguments.words.begin() + 1, arguments.words.end()});
    const std::uint64_t wanted = arguments.count("-n", 1);
    const std::string format = arguments.text("--format", "csv");
    if (format != "csv" && format != "f64" && format != "raw")
        wrong("--format: csv, f64 or raw: " + format);

    Stream stream;
    open_stream(stream, arguments);
    Drawing drawing{stream.stream, 0, values.p.data(), {}, {}};
    if (!law.methods.empty()) {
        const std::string method = arguments.text("--method", law.methods[0]);
        const auto at = std::find_if(law.methods.begin(), law.methods.end(),
                                     [&](auto m) { return m == method; });
        if (at == law.methods.end())
            wrong("--method: " + std::string(law.name) + " has " +
                  joined({law.methods.begin(), law.methods.end()}));
        drawing.method = law.method_codes[(std::size_t)(at - law.methods.begin())];
    } else if (arguments.has("--method")) {
        wrong("--method: " + std::string(law.name) + " has one method");
    }

    Element element = law.element;
    std::size_t width = 1, turn = 1;  // elements of a number; numbers that are drawn together
    if (std::strcmp(law.name, "words") == 0) {
        kef_brng properties;
        check(__vtsGetBrngProperties(__vtsGetStreamStateBrng(stream.stream), &properties));
        if (properties.word_size == 8) element = Element::word64;
        else width = (std::size_t)properties.word_size / 4;
    }
    if (!law.parameters.empty() && law.parameters[0].domain == Domain::list) {
        drawing.list = values.lists[0];
        width = drawing.list.size();
        drawing.factor = full_factor(values.lists[1], width);
    } else if (!law.parameters.empty() && law.parameters[0].domain == Domain::means) {
        turn = values.lists[0].size();
        if (turn > draw_elements) wrong("poisson-means: lambdas: more than 16384 numbers");
        while (drawing.list.size() + turn <= draw_elements)
            drawing.list.insert(drawing.list.end(), values.lists[0].begin(), values.lists[0].end());
    }
    if (element == Element::word64 && format == "f64")
        wrong("--format: a double does not hold 64 bits; csv or raw");
    const std::size_t numbers = draw_elements / width / turn * turn;
    const std::size_t bytes = element == Element::real || element == Element::word64 ? 8 : 4;

    Output output(arguments.text("-o"));
#ifdef F_SETPIPE_SZ
    fcntl(STDOUT_FILENO, F_SETPIPE_SZ, 1 << 20);  // fewer turns between writer and reader
#endif
    Progress progress(law.name, (double)wanted);
    const std::unique_ptr<double[]> drawn(new double[draw_elements]);
    std::string text;
    std::vector<double> wide;
    std::uint64_t done = 0;
    try {
        while (done < wanted) {
            if (interrupted()) throw Interrupted();
            check(law.draw(drawing, (std::int32_t)numbers, drawn.get()));
            const std::size_t n =
                (std::size_t)std::min<std::uint64_t>(numbers, wanted - done) * width;
            if (format == "raw" || (format == "f64" && element == Element::real)) {
                output.write({(const char*)drawn.get(), n * bytes});
            } else if (format == "f64") {
                wide.clear();
                each(element, drawn.get(), n, [&](auto value) { wide.push_back((double)value); });
                output.write({(const char*)wide.data(), n * 8});
            } else {
                text.clear();
                std::size_t column = 0;
                each(element, drawn.get(), n, [&](auto value) {
                    char digits[32];
                    text.append(digits, std::to_chars(digits, digits + sizeof digits, value).ptr);
                    column = column + 1 == width ? 0 : column + 1;
                    text += column == 0 ? '\n' : ',';
                });
                output.write(text);
            }
            done += n / width;
            progress.at((double)done);
        }
        output.close();
    } catch (const Interrupted&) {
        progress.clear();
        say("stopped by a signal after " + std::to_string(done) + " of " + std::to_string(wanted) +
            " numbers" +
            (arguments.has("-o") ? "; no file is left" : "; what was written is partial"));
        return 128 + interrupted();
    }
    return succeeded;
}

const Option options[] = {
    {"-n", "COUNT", "how many numbers, also as 1e9 (1)"},
    {"--generator", "NAME", "the generator (mt19937)"},
    {"--seed", "LIST", "words of 32 bits (the generator's default)"},
    {"--skip", "COUNT", "leave out so many numbers of the generator first"},
    {"--method", "NAME", "the method of the law"},
    {"--format", "csv|f64|raw",
     "lines of text, doubles, or doubles, integers and words as they are drawn, in the bytes "
     "of this machine (csv)"},
    {"-o", "FILE", "to this file, not to standard output"},
    {"--list", "", "tell of laws, parameters, methods and generators"}};

std::vector<std::string> names() {
    std::vector<std::string> all;
    for (const Law& law : laws) all.emplace_back(law.name);
    return all;
}

}  // namespace

const Command random = {"random", "random numbers of a law", "LAW [PARAMETER...]", options, run,
                        names};

}  // namespace command
