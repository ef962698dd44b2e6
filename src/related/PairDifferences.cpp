#include "related/PairDifferences.h"

void PairDifferences::ExtendRange(double difference) {
    if (difference > maxDifference) maxDifference = difference;
    if (difference < minDifference) minDifference = difference;
}
