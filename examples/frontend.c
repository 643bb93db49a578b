/* The program: command line, measurements, chapters. */
#include "frontend.h"

#include <errno.h>
#include <limits.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

/* The chapters, in the order of the output. */
static const struct {
    const char *name, *title;
    chapter_function *print;
} chapters[] = {
    {"measurements", "Real measurements", measurements_chapter},
    {"accuracy", "Three accuracies of one function", accuracy_chapter},
    {"errors", "Element errors", errors_chapter},
    {"threads", "Long vectors over several threads", threads_chapter},
    {"streams", "Random streams", streams_chapter},
    {"montecarlo", "A Monte Carlo valuation", monte_carlo_chapter},
    {"statistics", "Statistics, block by block", statistics_chapter},
    {"summary", "What each accuracy costs and gives", summary_chapter},
    {"fitting", "Splines through tabulated data", fitting_chapter},
};
enum { CHAPTERS = sizeof chapters / sizeof chapters[0] };

enum { GOOD = 0, FAILED = 1, USAGE = 2, MOST_ELEMENTS = 100000000, MOST_THREADS = 64 };

static int usage(FILE *to) {
    fprintf(to,
            "usage: frontend [option...] DATAFILE\n"
            "\n"
            "Runs the functions of the library over the measurements in DATAFILE (one number\n"
            "a line; lines that begin with # are comments) and over long vectors.\n"
            "\n"
            "  --elements N   length of the long vectors (1..%d; default 1000000)\n"
            "  --threads N    use at most N threads for one call (1..%d; default: one for\n"
            "                 each processor)\n"
            "  --picture FILE draw the splines as an SVG picture\n"
            "  --chapter NAME print this chapter only; may be repeated:\n"
            "                ",
            MOST_ELEMENTS, MOST_THREADS);
    for (int i = 0; i < CHAPTERS; ++i) fprintf(to, " %s", chapters[i].name);
    fprintf(to,
            "\n"
            "  --help         this text\n"
            "\n"
            "The environment variable KEF_VTM_MODE sets accuracy and error mode at the start,\n"
            "for instance KEF_VTM_MODE=VTM_EP,VTM_ERRMODE_STDERR.\n"
            "\n"
            "Exit status: 0 all is well; 1 the data cannot be used, memory or output failed, or\n"
            "a result was not what it must be; 2 wrong usage.\n");
    return to == stdout ? GOOD : USAGE;
}

static int usage_error(const char *what, const char *text) {
    fprintf(stderr, "frontend: %s%s; try --help\n", what, text);
    return USAGE;
}

/* A whole number from 1 to `most`; false when the text is anything else. */
static bool parse_count(const char *text, long most, long *value) {
    char *end;
    errno = 0;
    *value = strtol(text, &end, 10);
    return end != text && *end == '\0' && errno == 0 && *value >= 1 && *value <= most;
}

int main(int argc, char **argv) {
    struct session session = {.elements = 1000000, .threads = processors()};
    bool chosen[CHAPTERS] = {false}, all = true;
    const char *path = NULL;

    for (int i = 1; i < argc; ++i) {
        const char *option = argv[i];
        if (strcmp(option, "--help") == 0 || strcmp(option, "-h") == 0) return usage(stdout);
        if (option[0] != '-' || option[1] == '\0') {
            if (path != NULL) return usage_error("more than one data file: ", option);
            path = option;
            continue;
        }
        const bool elements = strcmp(option, "--elements") == 0;
        const bool threads = strcmp(option, "--threads") == 0;
        const bool picture = strcmp(option, "--picture") == 0;
        if (!elements && !threads && !picture && strcmp(option, "--chapter") != 0)
            return usage_error("unknown option ", option);
        if (++i == argc) return usage_error("no value after ", option);
        if (picture) {
            session.picture = argv[i];
            continue;
        }
        if (elements || threads) {
            long value;
            if (!parse_count(argv[i], elements ? MOST_ELEMENTS : MOST_THREADS, &value))
                return usage_error(
                    elements ? "wrong number of elements: " : "wrong number of threads: ", argv[i]);
            if (elements) session.elements = (int32_t)value;
            else session.threads = (int)value;
            continue;
        }
        int k = 0;
        while (k < CHAPTERS && strcmp(argv[i], chapters[k].name) != 0) ++k;
        if (k == CHAPTERS) return usage_error("unknown chapter ", argv[i]);
        chosen[k] = true;
        all = false;
    }
    if (path == NULL) return usage_error("no data file given", "");
    if (!read_measurements(path, &session)) return FAILED;

    int result = GOOD;
    for (int k = 0; k < CHAPTERS; ++k) {
        if (!all && !chosen[k]) continue;
        printf("%d. %s\n\n", k + 1, chapters[k].title);
        fflush(stdout); /* the progress goes to standard error */
        if (!chapters[k].print(&session)) {
            fprintf(stderr, "frontend: a check failed in chapter \"%s\"\n", chapters[k].name);
            result = FAILED;
        }
        printf("\n");
        fflush(stdout);
    }
    free(session.measurements);
    if (ferror(stdout)) {
        fprintf(stderr, "frontend: the output could not be written\n");
        result = FAILED;
    }
    return result;
}
