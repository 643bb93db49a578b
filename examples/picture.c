/* A picture in SVG. */
#include "picture.h"

#include <math.h>
#include <stdlib.h>
#include <string.h>

/* ---- round numbers -------------------------------------------------------- */

struct scale round_steps(double least) {
    int exponent = (int)floor(log10(least));
    double factor = 1;
    while (factor * pow(10, exponent) < least) factor = factor == 2 ? 5 : 2 * factor;
    if (factor == 10) factor = 1, ++exponent;
    const struct scale s = {factor, pow(10, abs(exponent)), exponent < 0 ? -exponent : 0};
    return s;
}

double multiple(struct scale s, double k) {
    return s.decimals > 0 ? k * s.factor / s.power : k * s.factor * s.power;
}

void write_multiple(struct scale s, double k, char *to, size_t size) {
    if (s.power > 1e7) snprintf(to, size, "%.9g", multiple(s, k));
    else snprintf(to, size, "%.*f", s.decimals, multiple(s, k));
}

double multiple_below(struct scale s, double x) {
    double k = floor(x / multiple(s, 1));
    while (multiple(s, k) > x) --k;
    while (multiple(s, k + 1) <= x) ++k;
    return k;
}

/* ---- the picture ---------------------------------------------------------- */

enum { WIDTH = 1000, ROW_HEIGHT = 440, PANEL_WIDTH = 400, PANEL_HEIGHT = 320, TITLE_HEIGHT = 50 };

void start_picture(struct picture *picture, FILE *to, int rows) {
    *picture = (struct picture){.to = to, .top = TITLE_HEIGHT};
    fprintf(picture->to,
            "<svg xmlns='http://www.w3.org/2000/svg' width='%d' height='%d' viewBox='0 0 %d %d' "
            "font-family='sans-serif' font-size='12'>\n"
            "<rect width='100%%' height='100%%' fill='white'/>\n",
            WIDTH, rows * ROW_HEIGHT, WIDTH, rows * ROW_HEIGHT);
}

void finish_picture(struct picture *picture) { fprintf(picture->to, "</svg>\n"); }

bool open_picture(struct picture *picture, const char *path, int rows) {
    FILE *to = fopen(path, "w");
    if (to == NULL) {
        perror(path);
        return false;
    }
    start_picture(picture, to, rows);
    picture->path = path;
    return true;
}

bool close_picture(struct picture *picture) {
    finish_picture(picture);
    const bool written = !ferror(picture->to);
    if (fclose(picture->to) == 0 && written) return true;
    fprintf(stderr, "frontend: %s could not be written\n", picture->path);
    return false;
}

static struct panel panel_at(const struct picture *picture, double left) {
    return (struct panel){.to = picture->to, .left = left, .top = picture->top};
}
struct panel left_panel(const struct picture *picture) {
    return panel_at(picture, 70);
}
struct panel right_panel(const struct picture *picture) {
    return panel_at(picture, 70 + WIDTH / 2);
}

void end_row(struct picture *picture) { picture->top += ROW_HEIGHT; }

static double place_x(const struct panel *p, double x) {
    return p->left + PANEL_WIDTH * (x - p->low_x) / (p->high_x - p->low_x);
}
static double place_y(const struct panel *p, double y) {
    return p->top + PANEL_HEIGHT * (1 - (y - p->low_y) / (p->high_y - p->low_y));
}

/* A text element with those attributes. */
static void draw_text(FILE *to, const char *attributes, const char *text) {
    fprintf(to, "<text %s>", attributes);
    for (; *text != 0; ++text) {
        if (*text == '<') fputs("&lt;", to);
        else if (*text == '&') fputs("&amp;", to);
        else fputc(*text, to);
    }
    fprintf(to, "</text>\n");
}

/* Five round numbers or so between low and high: the first and the last multiple. */
static struct scale ticks(double low, double high, double *first, double *last) {
    const struct scale s = round_steps((high - low) / 6);
    *first = ceil(low / multiple(s, 1) - 1e-9) + 0.0; /* no -0 */
    *last = multiple_below(s, high);
    return s;
}

void draw_axes(const struct panel *p, const char *title, const char *label_x, const char *label_y) {
    const double bottom = p->top + PANEL_HEIGHT;
    char place[100], number[40];
    double first, last;
    fprintf(p->to,
            "<rect x='%.1f' y='%.1f' width='%d' height='%d' fill='none' stroke='#888'/>\n"
            "<path stroke='#888' d='M%.1f %.1f",
            p->left, p->top, PANEL_WIDTH, PANEL_HEIGHT, p->left, bottom);
    const struct scale x = ticks(p->low_x, p->high_x, &first, &last);
    for (double k = first; k <= last && label_x != NULL; ++k)
        fprintf(p->to, "M%.1f %.1fv5", place_x(p, multiple(x, k)), bottom);
    const struct scale y = ticks(p->low_y, p->high_y, &first, &last);
    for (double k = first; k <= last; ++k)
        fprintf(p->to, "M%.1f %.1fh-5", p->left, place_y(p, multiple(y, k)));
    fprintf(p->to, "'/>\n");
    for (double k = first; k <= last; ++k) {
        snprintf(place, sizeof place, "x='%.1f' y='%.1f' text-anchor='end'", p->left - 8,
                 place_y(p, multiple(y, k)) + 4);
        write_multiple(y, k, number, sizeof number);
        draw_text(p->to, place, number);
    }
    ticks(p->low_x, p->high_x, &first, &last);
    for (double k = first; k <= last && label_x != NULL; ++k) {
        write_multiple(x, k, number, sizeof number);
        draw_label(p, multiple(x, k), strlen(number) < 12 ? number : "");
    }
    snprintf(place, sizeof place, "x='%.1f' y='%.1f' font-size='15'", p->left, p->top - 14);
    draw_text(p->to, place, title);
    if (label_x != NULL) {
        snprintf(place, sizeof place, "x='%.1f' y='%.1f' text-anchor='middle'",
                 p->left + PANEL_WIDTH / 2.0, bottom + 42);
        draw_text(p->to, place, label_x);
    }
    snprintf(place, sizeof place,
             "transform='translate(%.1f %.1f) rotate(-90)' text-anchor='middle'", p->left - 50,
             p->top + PANEL_HEIGHT / 2.0);
    draw_text(p->to, place, label_y);
}

void draw_curve(const struct panel *p, const char *colour, int n, const double *x,
                const double *y) {
    fprintf(p->to, "<polyline fill='none' stroke='%s' stroke-width='2' points='", colour);
    for (int i = 0; i < n; ++i) fprintf(p->to, "%.1f,%.1f ", place_x(p, x[i]), place_y(p, y[i]));
    fprintf(p->to, "'/>\n");
}

void draw_dot(const struct panel *p, const char *colour, double x, double y) {
    fprintf(p->to, "<circle cx='%.1f' cy='%.1f' r='3.5' fill='%s'/>\n", place_x(p, x),
            place_y(p, y), colour);
}

void draw_box(const struct panel *p, double x0, double x1, double y0, double y1) {
    fprintf(p->to,
            "<rect x='%.1f' y='%.1f' width='%.1f' height='%.1f' fill='#a8c0e0' "
            "stroke='#204080'/>\n",
            place_x(p, x0), place_y(p, y1), place_x(p, x1) - place_x(p, x0),
            place_y(p, y0) - place_y(p, y1));
}

void draw_key(const struct panel *p, int line, const char *text) {
    char place[60];
    snprintf(place, sizeof place, "x='%.1f' y='%.1f'", p->left + 12, p->top + 22 + 18 * line);
    draw_text(p->to, place, text);
}

void draw_label(const struct panel *p, double x, const char *text) {
    char place[60];
    snprintf(place, sizeof place, "x='%.1f' y='%.1f' text-anchor='middle'", place_x(p, x),
             p->top + PANEL_HEIGHT + 19);
    draw_text(p->to, place, text);
}

void draw_fields(const struct panel *p, int columns, int rows, const unsigned char *field, int hues,
                 int shades) {
    const double width = (double)PANEL_WIDTH / columns, height = (double)PANEL_HEIGHT / rows;
    fprintf(p->to,
            "<g transform='translate(%.1f %.1f) scale(%.6g %.6g)' fill='none' stroke-width='1.05'"
            " shape-rendering='crispEdges'>\n",
            p->left, p->top, width, height);
    for (int colour = 0; colour < hues * shades; ++colour) {
        const double angle = 2 * acos(-1) * (colour / shades) / hues,
                     light = shades > 1 ? 100 + 60.0 * (colour % shades) / (shades - 1) : 130;
        int part[3];
        for (int k = 0; k < 3; ++k) part[k] = (int)(light + 95 * cos(angle - k * 2 * acos(-1) / 3));
        fprintf(p->to, "<path stroke='#%02x%02x%02x' d='", part[0], part[1], part[2]);
        for (int row = 0; row < rows; ++row)
            for (int i = 0; i < columns;) {
                const int first = i;
                while (i < columns && field[row * columns + i] == colour) ++i;
                if (i > first) fprintf(p->to, "M%d %d.5h%d", first, row, i - first);
                else ++i;
            }
        fprintf(p->to, "'/>\n");
    }
    fprintf(p->to, "</g>\n");
}
