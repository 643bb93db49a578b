#!/usr/bin/env Rscript
# Times EM for normal data with missing values by R's packages lavaan and Amelia (Debian:
# r-cran-lavaan, r-cran-amelia, with --no-install-recommends): the peers of the last line of ./run
# bench statistics. Processor time; of Amelia that of the steps alone, without what it does before
# and after them.
suppressMessages({library(lavaan); library(Amelia)})
p <- 10
n <- 10000
set.seed(1)
x <- matrix(rnorm(n * p, 5), n)
x[runif(n * p) < 0.05] <- NA
by_lavaan <- function(steps) {
    patterns <- lavaan:::lav_data_missing_patterns(x)
    moments <- lavaan:::lav_samplestats_missing_patterns(Y = x, Mp = patterns)
    suppressWarnings(lavaan:::lav_mvnorm_missing_h1_estimate_moments(Y = x, Mp = patterns,
        Yp = moments, max.iter = steps, tol = 0))
}
by_amelia <- function(steps)
    amelia(x, m = 1, p2s = 0, boot.type = "none", emburn = c(steps, steps))
milliseconds <- function(em, steps) 1000 * min(replicate(5, sum(system.time(em(steps))[1:2])))
report <- function(package, time)
    cat(sprintf("%s %s: p = %d, n = %d, 5 %% missing, 20 steps: %.1f ms\n", package,
        packageVersion(package), p, n, time))
report("lavaan", milliseconds(by_lavaan, 20))
report("Amelia", (milliseconds(by_amelia, 220) - milliseconds(by_amelia, 20)) / 10)
