#pragma once

#include <vector>

/// The level of a signal over its whole length, in dB below full scale 1.0.
class level_meter {
public:
    /// @param count  how many samples of `block`, from its start, belong to the signal
    void add(const std::vector<float>& block, std::size_t count);

    double rms_dbfs() const;  ///< a full-scale square wave is 0; minus infinity for silence
    double peak_dbfs() const; ///< minus infinity for silence

private:
    double energy_ = 0;
    double peak_ = 0;
    double samples_ = 0;
};
