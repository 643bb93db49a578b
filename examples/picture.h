/* A picture in SVG: rows of two panels, one row after the other. */
#ifndef PICTURE_H
#define PICTURE_H

#include <stdbool.h>
#include <stddef.h>
#include <stdio.h>

/* ---- round numbers -------------------------------------------------------- */

/* The multiples of 1, 2 or 5 times a power of ten. */
struct scale {
    double factor, power; /* a step is factor * power, or factor / power with decimals */
    int decimals;
};

/* The smallest such step that is no less than `least` > 0. */
struct scale round_steps(double least);

/* Multiple k: with decimals a quotient, which is the number that its digits are read as. */
double multiple(struct scale s, double k);

/* Multiple k in digits. */
void write_multiple(struct scale s, double k, char *to, size_t size);

/* The number of the last multiple that does not exceed x. */
double multiple_below(struct scale s, double x);

/* ---- the picture ---------------------------------------------------------- */

struct picture {
    FILE *to;
    const char *path;
    double top; /* of the row that is drawn */
};

/* Opens a picture of so many rows; false, and a message, when that cannot be. */
bool open_picture(struct picture *picture, const char *path, int rows);
/* False, and a message, when it could not be written. */
bool close_picture(struct picture *picture);

/* The same in a file that the caller opens and closes. */
void start_picture(struct picture *picture, FILE *to, int rows);
void finish_picture(struct picture *picture);

/* A panel of a row: its place, and the ranges of its axes. */
struct panel {
    FILE *to;
    double left, top, low_x, high_x, low_y, high_y;
};
/* The left panel or the right one; the ranges are left to the caller. */
struct panel left_panel(const struct picture *picture);
struct panel right_panel(const struct picture *picture);
/* The row is done. */
void end_row(struct picture *picture);

/* Frame, title, what the axes show in which unit, and some five round numbers at each; none at an
 * axis without a label. */
void draw_axes(const struct panel *p, const char *title, const char *label_x, const char *label_y);

/* A line through n points. */
void draw_curve(const struct panel *p, const char *colour, int n, const double *x, const double *y);
void draw_dot(const struct panel *p, const char *colour, double x, double y);
void draw_box(const struct panel *p, double x0, double x1, double y0, double y1);

/* The whole panel in columns times rows fields, row by row from the top: field number
 * hue * shades + shade is of that hue, of so many, and of that shade, the first one dark. */
void draw_fields(const struct panel *p, int columns, int rows, const unsigned char *field, int hues,
                 int shades);

/* Words: line 0, 1, ... inside at the top; below the axis, in the middle at x. */
void draw_key(const struct panel *p, int line, const char *text);
void draw_label(const struct panel *p, double x, const char *text);

#endif
