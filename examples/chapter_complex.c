/* Complex functions: the two sides of their cuts, results where plain formulas fail, and the phase
 * portrait of a function: each point of the plane has the colour of its value's angle, lighter and
 * darker by turns as the modulus grows by a factor. */
#include <math.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "frontend.h"
#include "picture.h"

/* The functions that can be drawn. */
typedef void complex_function(int32_t n, const kef_complex16 *a, kef_complex16 *r);
static const struct {
    const char *name;
    complex_function *call;
} functions_of_z[] = {
#define FUNCTION(name) {#name, _vtmz##name},
    FUNCTION(Acos) FUNCTION(Asin) FUNCTION(Atan) FUNCTION(Acosh) FUNCTION(Asinh) FUNCTION(Atanh)
        FUNCTION(Conj) FUNCTION(Cos) FUNCTION(Sin) FUNCTION(Tan) FUNCTION(Cosh) FUNCTION(Sinh)
            FUNCTION(Tanh) FUNCTION(Exp) FUNCTION(Ln) FUNCTION(Log10) FUNCTION(Sqrt)
#undef FUNCTION
};
enum { FUNCTIONS_OF_Z = sizeof functions_of_z / sizeof functions_of_z[0] };

static complex_function *function_of_z(const char *name) {
    for (int i = 0; i < FUNCTIONS_OF_Z; ++i)
        if (strcmp(functions_of_z[i].name, name) == 0) return functions_of_z[i].call;
    return NULL;
}
bool is_portrait(const char *name) { return function_of_z(name) != NULL; }

/* ---- numbers ---------------------------------------------------------------- */

static void print_number(const char *before, kef_complex16 z) {
    printf("%s%.15g %c %.15gi", before, z.re, signbit(z.im) ? '-' : '+', fabs(z.im));
}
static bool print_value(const char *name, kef_complex16 z, kef_complex16 wanted) {
    kef_complex16 r;
    function_of_z(name)(1, &z, &r);
    printf("   %s(", name);
    print_number("", z);
    print_number(") = ", r);
    printf("\n");
    return fabs(r.re - wanted.re) <= 1e-15 * fabs(wanted.re) &&
           fabs(r.im - wanted.im) <= 1e-15 * fabs(wanted.im) && signbit(r.im) == signbit(wanted.im);
}

static bool print_cuts(void) {
    const double pi = acos(-1), acosh_2 = log(2 + sqrt(3));
    printf(
        "   Each side of a cut has its own values; the sign of a zero tells which is meant:\n\n");
    bool fine = print_value("Sqrt", (kef_complex16){-4, 0}, (kef_complex16){0, 2});
    fine &= print_value("Sqrt", (kef_complex16){-4, -0.0}, (kef_complex16){0, -2});
    fine &= print_value("Ln", (kef_complex16){-1, -0.0}, (kef_complex16){0, -pi});
    fine &= print_value("Acosh", (kef_complex16){-2, -0.0}, (kef_complex16){acosh_2, -pi});
    printf("\n   Both parts are right where plain formulas lose one, or overflow:\n\n");
    fine &= print_value("Sqrt", (kef_complex16){-1e20, 1}, (kef_complex16){5e-11, 1e10});
    fine &= print_value("Ln", (kef_complex16){1, 1e-10}, (kef_complex16){5e-21, 1e-10});
    const kef_complex16 a = {0x1p1000, 0x1p1000}, b = {0x1p1000, -0x1p1000};
    kef_complex16 r;
    _vtmzDiv(1, &a, &b, &r);
    printf("   Div(2^1000 + 2^1000 i, 2^1000 - 2^1000 i) = %g + %gi\n", r.re, r.im);
    return fine && r.re == 0 && r.im == 1;
}

/* ---- the portrait ----------------------------------------------------------- */

enum { HUES = 24, SHADES = 2, COLUMNS = 200, ROWS = 160 };

/* The number of the colour of a value. */
static int colour_of(kef_complex16 z) {
    double angle, modulus;
    _vtmzArg(1, &z, &angle);
    _vtmzAbs(1, &z, &modulus);
    if (!isfinite(angle)) return 0;
    const int hue = (int)floor(angle / (2 * acos(-1)) * HUES + HUES) % HUES;
    if (!(modulus > 0) || !isfinite(modulus)) return hue * SHADES;
    const double octave = log2(modulus);
    return hue * SHADES + (octave - floor(octave) < 0.5);
}

/* One function over the rectangle of the panel, as a path of horizontal strokes a colour. */
static bool draw_portrait(const struct panel *p, complex_function *f, const char *name) {
    unsigned char *colour = allocate((size_t)COLUMNS * ROWS, 1);
    kef_complex16 z[COLUMNS], w[COLUMNS];
    bool fine = true;
    for (int row = 0; row < ROWS; ++row) {
        progress(row, ROWS, name);
        for (int i = 0; i < COLUMNS; ++i) {
            z[i].re = p->low_x + (p->high_x - p->low_x) * (i + 0.5) / COLUMNS;
            z[i].im = p->high_y - (p->high_y - p->low_y) * (row + 0.5) / ROWS;
        }
        f(COLUMNS, z, w);
        for (int i = 0; i < COLUMNS; ++i) {
            fine &= !isnan(w[i].re) && !isnan(w[i].im);
            colour[row * COLUMNS + i] = (unsigned char)colour_of(w[i]);
        }
    }
    progress(ROWS, ROWS, NULL);
    draw_fields(p, COLUMNS, ROWS, colour, HUES, SHADES);
    free(colour);
    return fine;
}

static void itself(int32_t n, const kef_complex16 *a, kef_complex16 *r) {
    memcpy(r, a, (size_t)n * sizeof *r);
}

bool complex_chapter(const struct session *session) {
    bool fine = print_cuts();
    const char *name = session->portrait;
    if (session->picture == NULL) {
        printf(
            "\n   --picture FILE.svg draws the phase portrait of %s; --portrait NAME, of "
            "another.\n",
            name);
        return fine;
    }
    struct panel left = left_panel(session->picture), right = right_panel(session->picture);
    left.low_x = right.low_x = -5, left.high_x = right.high_x = 5;
    left.low_y = right.low_y = -4, left.high_y = right.high_y = 4;
    char title[100];
    snprintf(title, sizeof title, "Phase portrait of %s z", name);
    fine &= draw_portrait(&left, function_of_z(name), name);
    draw_axes(&left, title, "real part", "imaginary part");
    fine &= draw_portrait(&right, itself, "the colours");
    draw_axes(&right, "The colours: z itself", "real part", "imaginary part");
    end_row(session->picture);
    return fine;
}
