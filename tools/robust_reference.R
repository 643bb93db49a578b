#!/usr/bin/env Rscript
# Writes tests/data/robust_reference.txt: small published data sets, and what packages of Debian make
# of them. Usage: tools/robust_reference.R OUTPUT
# Packages: r-base-core, r-cran-robustbase, r-cran-rrcov, r-cran-lavaan, --no-install-recommends.
suppressMessages({
    library(robustbase)
    library(rrcov)
    library(lavaan)
})
output <- file(commandArgs(TRUE)[1], "w")
text <- function(x) paste(ifelse(is.na(x), "nan", formatC(x, digits = 15, format = "g")), collapse = " ")
line <- function(...) cat(..., "\n", file = output)
numbers <- function(mean, cov) {
    for (i in seq_along(mean)) line(text(c(mean[i], cov[i, 1:i])))
}

line("# Made by tools/robust_reference.R:", R.version.string, "rrcov", format(packageVersion("rrcov")),
    "lavaan", format(packageVersion("lavaan")))
line("# set NAME n p SOURCE: n rows of data")
line("# robust SET breakdown rejection, mle SET: of each variable its mean and a row of the covariance")

sets <- list(
    hbk = list(as.matrix(robustbase::hbk[, 1:3]), "Hawkins-Bradu-Kass-1984,robustbase"),
    stackloss = list(as.matrix(stackloss[, 1:3]), "Brownlee-1965,datasets"),
    wood = list(as.matrix(robustbase::wood[, 1:5]), "Draper-Smith-1966-Rousseeuw-1984,robustbase"),
    air = list(as.matrix(airquality[, 1:4]), "Chambers-1983-New-York-1973,datasets"))
for (name in names(sets)) {
    x <- sets[[name]][[1]]
    line("set", name, nrow(x), ncol(x), sets[[name]][[2]])
    for (j in seq_len(nrow(x))) line(text(x[j, ]))
}

# S-estimates with the biweight: the package's own.
for (name in c("hbk", "stackloss", "wood")) {
    r <- CovSest(sets[[name]][[1]], method = "sdet", bdp = 0.25, eps = 1e-15, maxiter = 20000)
    line("robust", name, 0.25, 1e-12)
    numbers(rrcov::getCenter(r), rrcov::getCov(r))
}

# The translated biweight (Rocke, Ann. Stat. 24:1327, 1996), straight from its definition: rho is
# the integral of u w(u), everything else root finding and integration by R.
translated <- function(x, breakdown, rejection, clean) {
    n <- nrow(x)
    p <- ncol(x)
    w <- function(u, M, c) ifelse(u <= M, 1, ifelse(u < M + c, (1 - ((u - M) / c)^2)^2, 0))
    half <- function(u, M, c) {  # the integral of u w(u) beyond M, u <= M + c
        t <- (u - M) / c
        c * (M * (t - 2 * t^3 / 3 + t^5 / 5) + c * (t^2 / 2 - t^4 / 2 + t^6 / 6))
    }
    rho <- function(u, M, c) pmin(u, M)^2 / 2 + half(pmin(pmax(u, M), M + c), M, c)
    mean_rho <- function(M, c)
        p / 2 * pchisq(M^2, p + 2) + rho(M + c, M, c) * pchisq((M + c)^2, p, lower.tail = FALSE) +
            integrate(function(u) rho(u, M, c) * 2 * u * dchisq(u^2, p), M, M + c, rel.tol = 1e-13,
                subdivisions = 1000)$value
    K <- sqrt(qchisq(rejection, p, lower.tail = FALSE))
    M <- uniroot(function(M) mean_rho(M, K - M) - breakdown * rho(K, M, K - M), c(0, K * 0.9999),
        tol = 1e-15)$root
    c <- K - M
    mu <- colMeans(x[clean, ])
    S <- cov(x[clean, ])
    for (k in 1:400) {
        V <- S / det(S)^(1 / p)
        d <- sqrt(mahalanobis(x, mu, V))
        s <- uniroot(function(s) mean(rho(d / s, M, c)) - breakdown * rho(K, M, c),
            median(d) * c(0.01, 100), tol = 1e-15)$root
        u <- w(d / s, M, c)
        mu <- colSums(u * x) / sum(u)
        S <- crossprod(sqrt(u) * sweep(x, 2, mu))
    }
    line("robust", name, breakdown, rejection)
    numbers(mu, s^2 * V)
}
clean <- list(hbk = -(1:14), stackloss = 1:21, wood = -c(4, 6, 8, 19))
for (name in names(clean)) {
    translated(sets[[name]][[1]], 0.375, 0.001, clean[[name]])
    translated(sets[[name]][[1]], 0.375, 0.01, clean[[name]])
}

# Maximum likelihood with missing values: EM of the saturated normal model.
x <- sets$air[[1]]
Mp <- lavaan:::lav_data_missing_patterns(x)
Yp <- lavaan:::lav_samplestats_missing_patterns(Y = x, Mp = Mp)
em <- lavaan:::lav_mvnorm_missing_h1_estimate_moments(Y = x, Mp = Mp, Yp = Yp, max.iter = 5000,
    tol = 1e-14)
line("mle", "air")
numbers(em$Mu, em$Sigma)
close(output)
