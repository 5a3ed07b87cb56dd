/// A smooth curve through given points.
#pragma once

#include <vector>

/// A cubic Hermite spline whose slopes are three-point finite differences, with a zero second derivative at both
/// ends; not a solved natural spline. In double precision.
class hermite_spline {
public:
    /// Reserves storage for `knots` knots, so that `fit` allocates nothing up to that number.
    explicit hermite_spline(int knots);

    /// @param x  at least three abscissae in rising order  @param y  as many ordinates
    /// Ends the process when these are something else.
    void fit(const std::vector<double>& x, const std::vector<double>& y);

    /// Evaluates at 0, 1, ... count - 1 into `out`. Beyond the knots the curve is a parabola.
    void evaluate(float* out, int count) const;

private:
    void find_coefficients();
    double at(double v, int knot) const;

    std::vector<double> m_x;
    std::vector<double> m_y;
    std::vector<double> m_b; // slopes at the knots
    std::vector<double> m_c;
    std::vector<double> m_d;
};
