# What the calls in case.json use where R has no call of its own: the formulas as textbooks have them, plain and slow.

Twosided <- function(z) 2 * pnorm(-abs(z))
Corrected <- function(d) sign(d) * pmax(abs(d) - 0.5, 0)  # for continuity, and not beyond 0
Ties <- function(x) { t <- as.numeric(table(x)); sum(t^3 - t) }
Upper <- function(x, df) pchisq(x, df, lower.tail = FALSE)

# A count among n that is expected to be n p. The correction is that of prop.test, with the sign of the excess.
BinomialZ <- function(x, n, p = 0.5) Corrected(x - n * p) / sqrt(n * p * (1 - p))
OneTailed <- function(z) pnorm(-abs(z))

# The likelihood ratio interval: where twice the log-likelihood falls by the chi-square quantile.
ProfileLimits <- function(x, n, level = 0.95) {
    fall <- function(p) 2 * (dbinom(x, n, x / n, log = TRUE) - dbinom(x, n, p, log = TRUE)) - qchisq(level, 1)
    c(uniroot(fall, c(1e-9, x / n), tol = 1e-14)$root, uniroot(fall, c(x / n, 1 - 1e-9), tol = 1e-14)$root)
}

# Wilcoxon's signed ranks of differences, zeros dropped (1945), with the variance under ties.
SignedRanks <- function(d) {
    d <- round(d[!is.na(d)], 10)  # differences of decimal fractions are tied where they would be without rounding
    d <- d[d != 0]
    n <- length(d)
    w <- sum(rank(abs(d))[d > 0])
    se <- sqrt(n * (n + 1) * (2 * n + 1) / 24 - Ties(abs(d)) / 48)
    list(w = w, se = se, z = (w - n * (n + 1) / 4) / se)
}

# Runs of a sequence of TRUE and FALSE (Wald and Wolfowitz, 1940). A weight adds to the counts alone: a record is one
# run at most, and one of weight 0 is one, too.
Runs <- function(upper, weight = rep(1, length(upper))) {
    n <- sum(weight)
    t <- 2 * sum(weight[upper]) * sum(weight[!upper])
    r <- length(rle(upper)$lengths)
    mean <- 1 + t / n
    se <- sqrt(t * (t - n) / (n^2 * (n - 1)))
    list(r = r, mean = mean, se = se, z = (if (n < 50) Corrected(r - mean) else r - mean) / se)
}

# The limit of the distribution of sqrt(n) D (Kolmogorov, 1933). It is told as 1 below 0.27 and as 0 from 3.1 on.
Kolmogorov <- function(z) {
    k <- 1:100
    if (z < 0.27) 1 else if (z >= 3.1) 0 else -2 * sum((-1)^k * exp(-2 * k^2 * z^2))
}
# Dallal and Wilkinson (1986), for significances up to 0.1.
Lilliefors <- function(D, n) exp(-7.01256 * D^2 * (n + 2.78019) + 2.99587 * D * sqrt(n + 2.78019) - 0.122119 +
                                 0.974598 / sqrt(n) + 1.67997 / n)
# The largest differences of the distribution function of x and a continuous one: above, below, of either sign.
Continuous <- function(x, cdf, ...) {
    d <- function(side) suppressWarnings(ks.test(x, cdf, ..., alternative = side, exact = FALSE)$statistic)
    list(above = d("greater"), below = -d("less"), both = max(d("greater"), d("less")))
}
# The same of a distribution of whole numbers.
Whole <- function(x, cdf, ...) {
    k <- 0:(max(x) + 1)
    d <- ecdf(x)(k) - cdf(k, ...)
    list(above = max(d), below = min(d), both = max(abs(d)))
}

# The median of the Walsh averages and the interval of the normal approximation of the signed rank sum.
WalshMedian <- function(d, level = 0.95) {
    d <- round(d[!is.na(d)], 10)
    n <- length(d)
    w <- outer(d, d, "+") / 2
    w <- sort(w[lower.tri(w, diag = TRUE)])
    moved <- if (any(d == 0)) d - min(d) + 1 else d
    half <- qnorm((1 + level) / 2) * sqrt(n * (n + 1) * (2 * n + 1) / 24 - Ties(abs(moved)) / 48)
    c(median(w), w[floor(n * (n + 1) / 4 - half) + 1], w[ceiling(n * (n + 1) / 4 + half)])
}
# The same of the differences of two samples; the ties of the largest value are left out.
ShiftMedian <- function(x, y, level = 0.95) {
    d <- sort(round(outer(x, y, "-"), 10))
    all <- c(x, y)
    n <- length(all)
    m <- length(x) * length(y)
    half <- qnorm((1 + level) / 2) * sqrt((n + 1) * m / 12 * (1 - Ties(all[all < max(all)]) / (n^3 - n)))
    c(median(d), d[floor(m / 2 - half) + 1], d[ceiling(m / 2 + half)])
}

# Mann and Whitney's U of x against y.
RankSum <- function(x, y) {
    r <- rank(c(x, y))
    m <- length(x)
    n <- length(y)
    N <- m + n
    u <- sum(r[1:m]) - m * (m + 1) / 2
    se <- sqrt(m * n / 12 * (N + 1 - Ties(c(x, y)) / (N * (N - 1))))
    exact <- min(1, 2 * pwilcox(min(u, m * n - u), m, n))  # no account of ties
    list(u = u, w = sum(r[1:m]), se = se, z = (u - m * n / 2) / se, exact = exact)
}

# Runs of two samples in the order of the values (Wald and Wolfowitz, 1940): the fewest and the most that ties allow.
# Found by trying both orders of each tied run of mixed values that keep its members together or alternate them.
TwoSampleRuns <- function(x, y) {
    g <- rep(c(TRUE, FALSE), c(length(x), length(y)))
    v <- c(x, y)
    values <- sort(unique(v))
    # runs so far, by the group that the sequence ends with
    few <- many <- c(`TRUE` = NA, `FALSE` = NA)
    for (value in values) {
        a <- sum(g[v == value])
        b <- sum(!g[v == value])
        next_few <- next_many <- c(`TRUE` = NA, `FALSE` = NA)
        for (first in c(TRUE, FALSE)) for (last in c(TRUE, FALSE)) {
            own <- RunsWithin(a, b, first, last)
            if (is.null(own)) next
            for (before in c("TRUE", "FALSE")) {
                join <- if (before == as.character(first)) 1 else 0
                start <- value == values[1]
                if (!start && is.na(few[[before]])) next
                l <- as.character(last)
                next_few[[l]] <- min(next_few[[l]], own[1] + if (start) 0 else few[[before]] - join, na.rm = TRUE)
                next_many[[l]] <- max(next_many[[l]], own[2] + if (start) 0 else many[[before]] - join, na.rm = TRUE)
            }
        }
        few <- next_few
        many <- next_many
    }
    m <- length(x)
    n <- length(y)
    t <- 2 * m * n
    N <- m + n
    se <- sqrt(t * (t - N) / (N^2 * (N - 1)))
    r <- c(min(few, na.rm = TRUE), max(many, na.rm = TRUE))
    d <- r - t / N - 1
    z <- (if (N < 50) ifelse(abs(d) < 0.5, 0, d + 0.5) else d) / se
    list(r = r, se = se, z = z, p = pnorm(z))
}
# Fewest and most runs of a TRUEs and b FALSEs that begin and end as told; NULL where there is no such order.
RunsWithin <- function(a, b, first, last) {
    if (a == 0 || b == 0) return(if (first == last && first == (a > 0)) c(1, 1) else NULL)
    head <- if (first) a else b
    tail <- if (first) b else a
    if (first != last) return(c(2, 2 * min(a, b)))
    if (head < 2) return(NULL)
    c(3, 2 * min(head - 1, tail) + 1)
}

# Moses' span of the ranks of the control group x with h trimmed from each end, and its chance (1952).
Moses <- function(x, y, h) {
    r <- sort(rank(c(x, y))[seq_along(x)])
    m <- length(x)
    span <- floor(r[m - h] - r[1 + h] + 1.5)
    list(span = span, p = phyper(m - 2 * h - 2, m, length(y), span - 1, lower.tail = FALSE))
}

# All pairs i < j of k samples, as two vectors.
Pairs <- function(k) { i <- combn(k, 2); list(i = i[1, ], j = i[2, ]) }

# Dunn (1964): pairs of groups by the mean ranks of all of them, first minus second. `factor` counts Bonferroni's pairs.
Dunn <- function(x, g) {
    N <- length(x)
    R <- tapply(rank(x), g, mean)
    n <- as.numeric(table(g))
    p <- Pairs(length(n))
    d <- as.numeric(R[p$i] - R[p$j])
    se <- sqrt((N * (N + 1) / 12 - Ties(x) / (12 * (N - 1))) * (1 / n[p$i] + 1 / n[p$j]))
    list(d = d, se = se, z = d / se, p = Twosided(d / se), adjusted = p.adjust(Twosided(d / se), "bonferroni"))
}
# The same of the columns of x, ranked by rows.
DunnOfRows <- function(x) {
    k <- ncol(x)
    R <- colMeans(t(apply(x, 1, rank)))
    p <- Pairs(k)
    d <- as.numeric(R[p$i] - R[p$j])
    se <- sqrt(k * (k + 1) / (6 * nrow(x)))
    list(R = R, d = d, se = rep(se, length(d)), z = d / se, p = Twosided(d / se),
         adjusted = p.adjust(Twosided(d / se), "bonferroni"))
}
# Friedman's statistic without the correction for ties (1937), of the columns named.
PlainFriedman <- function(x, columns) {
    x <- x[, columns]
    k <- ncol(x)
    12 * sum(colSums(t(apply(x, 1, rank)))^2) / (nrow(x) * k * (k + 1)) - 3 * nrow(x) * (k + 1)
}

# Jonckheere (1954) and Terpstra (1952): pairs that rise with the groups, ties by half; the variance under ties is that
# of Hollander and Wolfe's Nonparametric Statistical Methods.
Jonckheere <- function(x, g) {
    groups <- split(x, g)
    p <- Pairs(length(groups))
    rise <- function(a, b) sum(outer(a, b, "<")) + sum(outer(a, b, "==")) / 2
    J <- sum(mapply(function(i, j) rise(groups[[i]], groups[[j]]), p$i, p$j))
    n <- lengths(groups)
    t <- as.numeric(table(x))
    N <- length(x)
    f <- function(v) sum(v * (v - 1) * (2 * v + 5))
    v <- (f(N) - f(n) - f(t)) / 72 +
        sum(n * (n - 1) * (n - 2)) * sum(t * (t - 1) * (t - 2)) / (36 * N * (N - 1) * (N - 2)) +
        sum(n * (n - 1)) * sum(t * (t - 1)) / (8 * N * (N - 1))
    list(J = J, se = sqrt(v), z = (J - (N^2 - sum(n^2)) / 4) / sqrt(v))
}

# Counts above the common median: Pearson's chi-square, not corrected.
MedianTest <- function(x, g) suppressWarnings(chisq.test(table(x > median(x), as.character(g)), correct = FALSE))
MedianPairs <- function(x, g) {
    groups <- levels(factor(g))
    p <- Pairs(length(groups))
    sapply(seq_along(p$i), function(k) {
        is <- g %in% groups[c(p$i[k], p$j[k])]
        MedianTest(x[is], g[is])$statistic
    })
}

# Ryan, Einot, Gabriel and Welsch: a significance of m out of k samples.
Welsch <- function(p, m, k) ifelse(m >= k - 1, p, 1 - (1 - p)^(k / m))
