#include "voice/spline.h"

#undef NDEBUG // the assertions hold in every build
#include <cassert>
#include <cstddef>

hermite_spline::hermite_spline(int knots) {
    for (std::vector<double>* const values : {&m_x, &m_y, &m_b, &m_c, &m_d})
        values->reserve(static_cast<std::size_t>(knots));
}

// The texts of failed assertions are fixed, without blanks.
// clang-format off
void hermite_spline::fit(const std::vector<double>& x, const std::vector<double>& y) {
    assert(x.size()==y.size());
    assert(x.size()>2);
    m_x.assign(x.begin(), x.end());
    m_y.assign(y.begin(), y.end());
    const std::size_t last = m_x.size() - 1;
    for (std::size_t i = 0; i < last; ++i)
        assert(m_x[i]<m_x[i+1]);
    find_coefficients();
    assert(m_x.size()==m_y.size());
    assert(m_x.size()==m_b.size());
    assert(m_x.size()>2);
}
// clang-format on

void hermite_spline::find_coefficients() {
    const std::size_t last = m_x.size() - 1;
    m_b.resize(last + 1);
    for (std::size_t i = 1; i < last; ++i) {
        const double h = m_x[i + 1] - m_x[i];
        const double l = m_x[i] - m_x[i - 1];
        m_b[i] =
            -h / (l * (l + h)) * m_y[i - 1] + (h - l) / (h * l) * m_y[i] + l / (h * (l + h)) * m_y[i + 1];
    }
    m_b[0] = 0.5 * (3.0 * (m_y[1] - m_y[0]) / (m_x[1] - m_x[0]) - m_b[1]);
    m_b[last] = 0.5 * (3.0 * (m_y[last] - m_y[last - 1]) / (m_x[last] - m_x[last - 1]) - m_b[last - 1]);

    m_c.assign(last + 1, 0.0);
    m_d.assign(last + 1, 0.0);
    for (std::size_t i = 0; i < last; ++i) {
        const double h = m_x[i + 1] - m_x[i];
        m_c[i] = (3.0 * (m_y[i + 1] - m_y[i]) / h - (2.0 * m_b[i] + m_b[i + 1])) / h;
        m_d[i] = ((m_b[i + 1] - m_b[i]) / (3.0 * h) - 2.0 / 3.0 * m_c[i]) / h;
    }
}

void hermite_spline::evaluate(float* out, int count) const {
    const int last = static_cast<int>(m_x.size()) - 1;
    int knot = 0;
    for (int i = 0; i < count; ++i) {
        while (knot < last && m_x[static_cast<std::size_t>(knot) + 1] <= i)
            ++knot;
        out[i] = static_cast<float>(at(i, knot));
    }
}

/// The curve at `v`, by the last knot not above it, or the first.
double hermite_spline::at(double v, int knot) const {
    const auto i = static_cast<std::size_t>(knot);
    const double t = v - m_x[i];
    const double cubic = v < m_x[0] ? 0.0 : m_d[i];
    return ((cubic * t + m_c[i]) * t + m_b[i]) * t + m_y[i];
}
