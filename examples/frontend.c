/* The program: command line, measurements, chapters. */
#include "frontend.h"

#include <errno.h>
#include <limits.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "picture.h"

static const struct {
    const char *name, *title;
    int rows; /* of the picture */
    chapter_function *print;
} chapters[] = {
#define CHAPTER(name, rows, title) {#name, title, rows, name##_chapter},
#include "chapters.def"
#undef CHAPTER
};
enum { CHAPTERS = sizeof chapters / sizeof chapters[0] };

/* The options, and what stands for their values; null: there is none. */
enum option {
#define OPTION(name, value, meaning) OPTION_##name,
#define FLAG(name, meaning) OPTION_##name,
#include "options.def"
#undef OPTION
#undef FLAG
    OPTIONS
};
static const struct {
    const char *name, *value, *meaning;
} options[OPTIONS] = {
#define OPTION(name, value, meaning) {"--" #name, #value, meaning},
#define FLAG(name, meaning) {"--" #name, NULL, meaning},
#include "options.def"
#undef OPTION
#undef FLAG
};

enum { GOOD = 0, FAILED = 1, USAGE = 2, MOST_ELEMENTS = 100000000, MOST_THREADS = 64 };

static int usage(void) {
    printf(
        "usage: frontend [option...] FILE\n"
        "\n"
        "Runs the functions of the library over the measurements in FILE (one number a\n"
        "line; lines that begin with # are comments) and over long vectors.\n"
        "\n");
    for (int i = 0; i < OPTIONS; ++i)
        printf("  %-10s %-5s %s\n", options[i].name, options[i].value ? options[i].value : "",
               options[i].meaning);
    printf("\nChapters:");
    for (int i = 0; i < CHAPTERS; ++i) printf(" %s", chapters[i].name);
    printf(
        "\n\n"
        "The environment variable KEF_VTM_MODE sets accuracy and error mode at the start,\n"
        "for instance KEF_VTM_MODE=VTM_EP,VTM_ERRMODE_STDERR.\n"
        "\n"
        "Exit status: 0 all is well; 1 the data cannot be used, memory or output failed, or\n"
        "a result was not what it must be; 2 wrong usage.\n");
    return GOOD;
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
    struct session session = {.elements = 1000000, .threads = processors(), .portrait = "Tan"};
    bool chosen[CHAPTERS] = {false}, all = true;
    const char *path = NULL, *picture_path = NULL;

    for (int i = 1; i < argc; ++i) {
        const char *word = argv[i];
        if (word[0] != '-' || word[1] == '\0') {
            if (path != NULL) return usage_error("more than one data file: ", word);
            path = word;
            continue;
        }
        int option = 0, k = 0;
        while (option < OPTIONS && strcmp(word, options[option].name) != 0) ++option;
        if (option == OPTIONS) return usage_error("unknown option ", word);
        if (options[option].value != NULL && ++i == argc)
            return usage_error("no value after ", word);
        long count;
        switch ((enum option)option) {
            case OPTION_help: return usage();
            case OPTION_table: session.table = true; break;
            case OPTION_picture: picture_path = argv[i]; break;
            case OPTION_portrait:
                if (!is_portrait(argv[i]))
                    return usage_error("no function of a complex number is called ", argv[i]);
                session.portrait = argv[i];
                break;
            case OPTION_elements:
                if (!parse_count(argv[i], MOST_ELEMENTS, &count))
                    return usage_error("wrong number of elements: ", argv[i]);
                session.elements = (int32_t)count;
                break;
            case OPTION_threads:
                if (!parse_count(argv[i], MOST_THREADS, &count))
                    return usage_error("wrong number of threads: ", argv[i]);
                session.threads = (int)count;
                break;
            case OPTION_chapter:
                while (k < CHAPTERS && strcmp(argv[i], chapters[k].name) != 0) ++k;
                if (k == CHAPTERS) return usage_error("unknown chapter ", argv[i]);
                chosen[k] = true;
                all = false;
                break;
            case OPTIONS: break;
        }
    }
    if (path == NULL) return usage_error("no data file given", "");
    if (!read_measurements(path, &session)) return FAILED;
    int rows = 0;
    for (int k = 0; k < CHAPTERS; ++k) rows += all || chosen[k] ? chapters[k].rows : 0;
    struct picture picture;
    if (picture_path != NULL && rows > 0) {
        if (!open_picture(&picture, picture_path, rows)) return FAILED;
        session.picture = &picture;
    }

    int result = GOOD;
    printf(
        "KEF computes elementary functions, random numbers, statistics and splines over whole\n"
        "arrays, on x86 processors with SSE2 and SSE3, and states how exact each result is.\n"
        "This is the %s member of the library.\n",
        kef_member());
    for (int k = 0; k < CHAPTERS; ++k) {
        if (!all && !chosen[k]) continue;
        printf("\n%d. %s\n\n", k + 1, chapters[k].title);
        fflush(stdout); /* the progress goes to standard error */
        if (!chapters[k].print(&session)) {
            fprintf(stderr, "frontend: a check failed in chapter \"%s\"\n", chapters[k].name);
            result = FAILED;
        }
        fflush(stdout);
    }
    free(session.measurements);
    if (session.picture != NULL) {
        if (close_picture(&picture)) printf("\nThe picture is in %s.\n", picture_path);
        else result = FAILED;
    }
    if (ferror(stdout)) {
        fprintf(stderr, "frontend: the output could not be written\n");
        result = FAILED;
    }
    return result;
}
