// What the back-end benchmarks share: a clock in milliseconds and the median they report.
#pragma once

#include <vector>

class CFigures
{
public:
    // The performance counter in milliseconds; only differences mean anything.
    static double NowMs();
    // The upper median; -1 for no values, which the tables print as such.
    static double Median(std::vector<double> values);
};
