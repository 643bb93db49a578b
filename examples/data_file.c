/* One number a line; nothing in the file is trusted. */
#include <ctype.h>
#include <errno.h>
#include <math.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "frontend.h"

enum {
    LONGEST_LINE = 255,
    MOST_COMPLAINTS = 10,
    MOST_MEASUREMENTS = 10000000,
};

/* Copies text for printing: what is not plain ASCII becomes a question mark. */
static void copy_printable(char *to, size_t size, const char *from) {
    size_t i = 0;
    for (; from[i] != '\0' && i + 1 < size; ++i)
        to[i] = from[i] >= ' ' && from[i] <= '~' ? from[i] : '?';
    to[i] = '\0';
}

/* Reads a line without its end into `line`, with a control character for every
 * NUL byte; false at the end of the file. *too_long: it did not fit. */
static bool read_line(FILE *file, char line[LONGEST_LINE + 1], bool *too_long) {
    size_t length = 0;
    int c = getc(file);
    if (c == EOF) return false;
    *too_long = false;
    for (; c != EOF && c != '\n'; c = getc(file)) {
        if (length < LONGEST_LINE) line[length++] = c == '\0' ? '\1' : (char)c;
        else *too_long = true;
    }
    if (length > 0 && line[length - 1] == '\r') --length;
    line[length] = '\0';
    return true;
}

/* What is wrong with the text as a number; null when nothing is. */
static const char *parse(const char *text, double *value) {
    char *end;
    *value = strtod(text, &end);
    if (end == text) return "not a number";
    while (isspace((unsigned char)*end)) ++end;
    if (*end != '\0') return "more than one number";
    if (!isfinite(*value)) return "not a finite number";
    return NULL;
}

bool read_measurements(const char *path, struct session *session) {
    FILE *file = fopen(path, "rb");
    if (file == NULL) {
        fprintf(stderr, "frontend: %s: %s\n", path, strerror(errno));
        return false;
    }
    size_t capacity = 256;
    session->measurements = allocate(capacity, sizeof(double));
    session->count = 0;
    session->title[0] = '\0';

    char line[LONGEST_LINE + 1];
    bool too_long, too_many = false;
    long bad_lines = 0;
    errno = 0;
    for (long number = 1; read_line(file, line, &too_long); ++number) {
        const char *text = line;
        while (isspace((unsigned char)*text)) ++text;
        if (*text == '\0' && !too_long) continue;
        if (*text == '#') {
            while (*text == '#' || *text == ' ') ++text;
            if (session->title[0] == '\0')
                copy_printable(session->title, sizeof session->title, text);
            continue;
        }
        double value;
        const char *complaint = too_long ? "line too long" : parse(text, &value);
        if (complaint != NULL) {
            char shown[41];
            copy_printable(shown, sizeof shown, text);
            if (++bad_lines <= MOST_COMPLAINTS)
                fprintf(stderr, "frontend: %s:%ld: %s: \"%s\"\n", path, number, complaint, shown);
            continue;
        }
        if (session->count == MOST_MEASUREMENTS) {
            too_many = true;
            break;
        }
        if ((size_t)session->count == capacity) {
            double *larger = allocate(2 * capacity, sizeof(double));
            memcpy(larger, session->measurements, capacity * sizeof(double));
            free(session->measurements);
            session->measurements = larger;
            capacity *= 2;
        }
        session->measurements[session->count++] = value;
    }
    const int read_error = ferror(file) ? errno : 0;
    fclose(file);

    if (read_error != 0) fprintf(stderr, "frontend: %s: %s\n", path, strerror(read_error));
    else if (too_many)
        fprintf(stderr, "frontend: %s: more than %d measurements\n", path, MOST_MEASUREMENTS);
    else if (bad_lines > 0)
        fprintf(stderr, "frontend: %s: %ld bad line%s; nothing was computed\n", path, bad_lines,
                bad_lines == 1 ? "" : "s");
    else if (session->count < 2)
        fprintf(stderr, "frontend: %s: %d measurement%s found, at least 2 needed\n", path,
                (int)session->count, session->count == 1 ? "" : "s");
    else return true;
    free(session->measurements);
    session->measurements = NULL;
    return false;
}

const char *copy_quantity(const struct session *session, char *to, size_t size) {
    snprintf(to, size, "%s", session->title[0] != 0 ? session->title : "measured value");
    char *unit = strchr(to, ',');
    if (unit == NULL) return "";
    char *rest = strchr(++unit, ',');
    if (rest != NULL) *rest = 0;
    return unit;
}
