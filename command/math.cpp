// kef math: a function over columns.
#include <algorithm>
#include <cctype>
#include <cmath>
#include <variant>

#include "kef_vm.h"
#include "numbers.h"
#include "output.h"
#include "progress.h"
#include "table.h"

namespace command {

namespace {

// Dispatch tables of the real functions of doubles.
struct Function {
    std::string name;
    std::variant<const kef_vtm_d_map1*, const kef_vtm_d_map2*, const kef_vtm_d_mapx*,
                 const kef_vtm_d_map1x2*, const kef_vtm_d_linear_frac*>
        slots;
    std::size_t inputs, outputs, scalars;
};

std::vector<Function> functions() {
    std::vector<Function> all;
#define KEF_TAKE_map1(F) all.push_back({#F, kef_vtm_kernel_d##F##_ttab, 1, 1, 0});
#define KEF_TAKE_map2(F) all.push_back({#F, kef_vtm_kernel_d##F##_ttab, 2, 1, 0});
#define KEF_TAKE_mapx(F) all.push_back({#F, kef_vtm_kernel_d##F##_ttab, 1, 1, 1});
#define KEF_TAKE_map1x2(F) all.push_back({#F, kef_vtm_kernel_d##F##_ttab, 1, 2, 0});
#define KEF_TAKE_linear_frac(F) all.push_back({#F, kef_vtm_kernel_d##F##_ttab, 2, 1, 4});
#define KEF_TAKE_pack_i(F)
#define KEF_TAKE_pack_v(F)
#define KEF_TAKE_pack_m(F)
#define KEF_TAKE_unpack_i(F)
#define KEF_TAKE_unpack_v(F)
#define KEF_TAKE_unpack_m(F)
#define KEF_TYPE_s(F, shape)
#define KEF_TYPE_c(F, shape)
#define KEF_TYPE_z(F, shape)
#define KEF_TYPE_d(F, shape) KEF_TAKE_##shape(F)
#define KEF_ROW(type, F, shape, ...) KEF_TYPE_##type(F, shape)
#include "vm/surface/surface.def"
    return all;
}

std::vector<std::string> names() {
    std::vector<std::string> known;
    for (const auto& function : functions()) known.push_back(function.name);
    return known;
}

const Option options[] = {
    KEF_TABLE_OPTIONS,
    {"--accuracy", "HA|LA|EP", "53, about 50 or 26 good bits (HA)"},
    {"--scalars", "LIST", "the exponent of Powx; scale and shift of both arguments of LinearFrac"},
    {"--strict", "", "an element without a proper result ends the command"},
    {"-o", "FILE", "to this file, not to standard output"}};

std::string lower(std::string text) {
    for (char& c : text) c = (char)std::tolower((unsigned char)c);
    return text;
}

// The first element error of a call, and how many there are.
thread_local struct {
    std::uint64_t count;
    std::int32_t index, code;
} errors;

int note(kef_vtm_error_record* record) {
    if (errors.count++ == 0) errors.index = record->index, errors.code = record->code;
    return 1;
}

int run(const Arguments& arguments) {
    if (arguments.words.size() != 2)
        wrong("a function and a file are wanted, or - for standard input");
    const auto all = functions();
    const auto function = std::find_if(all.begin(), all.end(), [&](const Function& f) {
        return lower(f.name) == lower(arguments.words[0]);
    });
    if (function == all.end())
        wrong("no function " + arguments.words[0] + "; there are: " + joined(names(), " "));
    const std::string accuracy = arguments.text("--accuracy", "HA");
    const auto slot = accuracy == "HA" ? VTM_SLOT_HA : accuracy == "LA" ? VTM_SLOT_LA : VTM_SLOT_EP;
    if (slot == VTM_SLOT_EP && accuracy != "EP") wrong("--accuracy: HA, LA or EP: " + accuracy);
    const auto scalars = arguments.numbers("--scalars");
    if (scalars.size() != function->scalars)
        wrong("--scalars: " + function->name + " takes " + std::to_string(function->scalars));

    const auto table = open_table(arguments.words[1], arguments);
    const auto columns = choose_columns(*table, arguments);
    const std::size_t p = columns.size();
    if (function->inputs == 2 && p != 2)
        throw Failure(function->name + " takes two columns, and there are " + std::to_string(p) +
                          "; --columns chooses them",
                      wrong_use);
    table->select(columns);
    Output output(arguments.text("-o"));
    const std::size_t results = function->inputs == 2 ? 1 : p * function->outputs;
    std::string text;
    const auto name = [&](std::size_t i) { return table->columns()[columns[i]]; };
    for (std::size_t i = 0; i < results; ++i) {
        const std::string of =
            function->inputs == 2 ? name(0) + "," + name(1) : name(i / function->outputs);
        const std::string which = function->outputs == 2 ? (i % 2 == 0 ? ".1" : ".2") : "";
        text += (i > 0 ? "," : "") + quoted(function->name + which + "(" + of + ")");
    }
    output.write(text + "\n");

    kef_vtm_kernel_SetMode(VTM_ERRMODE_CALLBACK);
    kef_vtm_kernel_SetErrorCallBack(note);
    std::uint64_t bad = 0, done = 0;
    std::string first_bad;
    Progress progress(table->name(), (double)table->size());
    Rows rows;
    std::vector<double> a, b, y, z, result;
    while (table->read(rows)) {
        const std::size_t n = rows.size();
        a.resize(n), b.resize(n), y.resize(n), z.resize(n), result.resize(n * results);
        for (std::size_t i = 0; i < p; i += function->inputs) {
            for (std::size_t k = 0; k < n; ++k) {
                a[k] = rows.values[k * p + i];
                if (function->inputs == 2) b[k] = rows.values[k * p + i + 1];
            }
            errors.count = 0;
            const std::int32_t count = (std::int32_t)n;
            struct Call {
                std::int32_t n;
                double *a, *b, *y, *z;
                const double* s;
                int slot;
                void operator()(const kef_vtm_d_map1* t) const { t[slot](n, a, y); }
                void operator()(const kef_vtm_d_map2* t) const { t[slot](n, a, b, y); }
                void operator()(const kef_vtm_d_mapx* t) const { t[slot](n, a, s[0], y); }
                void operator()(const kef_vtm_d_map1x2* t) const { t[slot](n, a, y, z); }
                void operator()(const kef_vtm_d_linear_frac* t) const {
                    t[slot](n, a, b, s[0], s[1], s[2], s[3], y);
                }
            };
            std::visit(Call{count, a.data(), b.data(), y.data(), z.data(), scalars.data(), slot},
                       function->slots);
            if (errors.count > 0 && bad == 0)
                first_bad = table->name() + ":" +
                            std::to_string(rows.lines[(std::size_t)errors.index]) + ": column " +
                            name(i) + ": " + function->name + ": " +
                            kef_vtm_status_text(errors.code);
            bad += errors.count;
            if (bad > 0 && arguments.has("--strict")) throw Failure(first_bad);
            const std::size_t place = function->inputs == 2 ? 0 : i * function->outputs;
            for (std::size_t k = 0; k < n; ++k) {
                result[k * results + place] = y[k];
                if (function->outputs == 2) result[k * results + place + 1] = z[k];
            }
        }
        text.clear();
        for (std::size_t k = 0; k < n * results; ++k) {
            append(text, result[k]);
            text += (k + 1) % results == 0 ? '\n' : ',';
        }
        output.write(text);
        done += n;
        progress.at((double)table->position());
    }
    if (interrupted()) {
        if (!arguments.has("-o")) output.close();
        progress.clear();
        say("stopped by a signal after " + std::to_string(done) + " rows" +
            (arguments.has("-o") ? "; no file is left" : "; what was written is partial"));
        return 128 + interrupted();
    }
    output.close();
    progress.clear();
    if (bad > 0)
        say(first_bad +
            (bad > 1 ? " (and " + std::to_string(bad - 1) + " more such elements)" : ""));
    return succeeded;
}

}  // namespace

const Command math = {"math", "a function of the columns of a file", "FUNCTION FILE", options, run,
                      names};

}  // namespace command
