#pragma once

namespace tarn {

/// The limit of Kolmogorov's distribution: how probable it is that the root of the size times the largest difference is
/// `z` or more (Smirnov 1948, Annals of Mathematical Statistics 19, 279-281). Exact to the last digits; 1 for `z` of 0
/// and less, NaN for NaN.
double KolmogorovLimitUpperTail(long double z);

/// Kolmogorov's distribution for a sample of `size`: how probable it is that its distribution function lies
/// `difference` or more from the true one, to either side. By Durbin's matrix where that is small (Marsaglia, Tsang and
/// Wang 2003, Journal of Statistical Software 8, 18), by the one-sided distribution where the tail is (Birnbaum and
/// Tingey 1951, Annals of Mathematical Statistics 22, 592-596), else by the series of Pelz and Good (1976, Journal of
/// the Royal Statistical Society B 38, 152-156); which of them where follows Simard and L'Ecuyer (2011, Journal of
/// Statistical Software 39, 11). 6 digits hold everywhere, 10 and more for sizes up to 140 and for small tails.
///
/// `size`: a whole number; NaN for one below 1.
double KolmogorovUpperTail(double size, double difference);

/// The same of the distance to one side. To a size of a million the exact distribution (Birnbaum and Tingey 1951), then
/// that of Maag and Dicaire (1971, Biometrika 58, 653-656).
double KolmogorovOneSidedUpperTail(double size, double difference);

}  // namespace tarn
