# Prints what R says of the samples, for tests/host/beyond/RankTestsTest.cpp and others; scripts/check_like starts it.
# A line holds an id, the numbers and the call.
folder <- commandArgs(trailingOnly = TRUE)[1]
options(warn = -1)

lines <- strsplit(readLines(file.path(folder, "samples.csv")), ",", fixed = TRUE)
number <- function(text) if (grepl(":", text)) eval(parse(text = text)) else as.numeric(text)
for (line in lines) assign(line[1], unlist(lapply(strsplit(line[2], " ")[[1]], number)))

record <- function(id, call, pick) {
  result <- tryCatch(eval(parse(text = call), globalenv()), error = function(e) NULL)
  numbers <- if (is.null(result)) NA else pick(result)
  text <- ifelse(is.na(numbers), "nan", sprintf("%.17g", as.numeric(numbers)))
  cat(id, "\t", paste(text, collapse = " "), "\t", call, "\n", sep = "")
}
test <- function(result) c(result$statistic, result$p.value)

sides <- c("two.sided", "less", "greater")
for (correct in c(TRUE, FALSE)) for (side in sides) {
  choices <- sprintf("alternative = \"%s\", correct = %s", side, correct)
  end <- paste(side, ifelse(correct, "corrected", "plain"))
  for (name in c("plain", "tied", "even", "large", "far")) for (mu in c(0, 1.5)) {
    record(paste("ranksum", name, mu, end),
           sprintf("wilcox.test(%s.x, %s.y, exact = FALSE, mu = %s, %s)", name, name, mu, choices), test)
  }
  for (name in c("plain", "tied", "zeros", "few", "far")) {
    record(paste("signedrank", name, end), sprintf("wilcox.test(%s.d, exact = FALSE, %s)", name, choices), test)
  }
  for (counts in c("7 20 0.5", "10 20 0.5", "31 40 0.6", "2 1000 0.3", "3 5 0.5", "900 1000 0.1", "5 11 0.47")) {
    with <- strsplit(counts, " ")[[1]]
    record(paste("proportion", counts, end),
           sprintf("prop.test(%s, %s, %s, %s)", with[1], with[2], with[3], choices), test)
  }
  for (counts in c("7 3 2 9", "5 5 5 5", "30 12 18 31", "1 6 1 7", "400 3 5 390")) {
    with <- strsplit(counts, " ")[[1]]
    record(paste("median", counts, end),
           sprintf("prop.test(matrix(c(%s, %s, %s, %s), 2, byrow = TRUE), %s)", with[1], with[2], with[3], with[4],
                   choices), test)
  }
}
for (correct in c(TRUE, FALSE)) for (counts in c("8 3", "4 4", "5 6", "200 90", "0 9", "1500 1")) {
  with <- strsplit(counts, " ")[[1]]
  record(paste("mcnemar", counts, ifelse(correct, "corrected", "plain")),
         sprintf("mcnemar.test(matrix(c(5, %s, %s, 7), 2), correct = %s)", with[1], with[2], correct), test)
}
for (side in sides) for (name in c("plain", "tied", "even", "large", "far")) {
  record(paste("kolmogorov", name, side),
         sprintf("ks.test(%s.x, %s.y, exact = FALSE, alternative = \"%s\")", name, name, side), test)
}
for (side in sides) for (name in c("plain", "tied", "even", "large", "far")) {
  record(paste("concordance", name, side),
         sprintf("cor.test(rep(1:2, c(length(%s.x), length(%s.y))), c(%s.x, %s.y), method = \"kendall\",
                  exact = FALSE, alternative = \"%s\")" |> gsub(pattern = "\\s+", replacement = " "),
                 name, name, name, name, side), test)
}
for (side in sides) {
  record(paste("concordance three", side),
         sprintf(paste("cor.test(rep(1:3, c(9, 12, 22)), c(tied.x, tied.y, large.x %%/%% 3), method = \"kendall\",",
                       "exact = FALSE, alternative = \"%s\")"), side), test)
}

sets <- c(five = "c(0.01, 0.04, 0.03, 0.005, 0.2)", ties = "c(0.9, 0.4, 0.4, 0.01, 0.01, 1, 0)",
          missing = "c(0.02, NA, 0.001, 0.3, NA, 0.04)", two = "c(0.03, 0.04)", one = "0.2",
          hundred = "((1:100 * 37) %% 101 / 101)^3", tiny = "c(1e-300, 1e-12, 3e-9, 0.7, 2e-300)",
          convex = "c(0.0101, 0.0102, 0.0103, 0.0104, 0.5, 0.6, 0.0105)")
for (name in names(sets)) for (method in c("none", "bonferroni", "holm", "hochberg", "hommel", "BH", "BY")) {
  record(paste("adjust", name, tolower(method)), sprintf("p.adjust(%s, \"%s\")", sets[[name]], method), identity)
}

# The calls that an analyst is shown, with the columns of table.csv as variables.
table <- read.csv(file.path(folder, "table.csv"), check.names = FALSE)
for (name in names(table)) assign(name, table[[name]])
for (line in strsplit(readLines(file.path(folder, "calls.tsv")), "\t", fixed = TRUE)) {
  if (line[1] != "r") next
  pick <- function(result) if (is.list(result)) result$p.value else result
  record(paste("call", line[2]), line[3], pick)
}
