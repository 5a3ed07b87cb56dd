// The transforms beside FFTW's on the same input: time, its ratio, and the relative RMS errors of both
// against a transform in double precision, means over many inputs and for each way FFTW has to plan.

#include <algorithm>
#include <cmath>
#include <complex>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <random>
#include <utility>
#include <vector>

#include <benchmark/benchmark.h>

#include "dsp/discrete_transform.h"
#include "dsp/vector_targets.h"
#include "fftw_transform.h"
#include "timing.h"

namespace {

using exact_spectrum = std::vector<std::complex<double>>;

struct task {
    std::vector<complex32f> in; ///< `size` values or bins; those of real samples have imaginary parts of 0
    exact_spectrum exact;       ///< unscaled, as far as the peer makes it; real samples in pairs
};

exact_spectrum defining_sums(const std::vector<complex32f>& in, std::size_t bins, double sign) {
    const std::size_t size = in.size();
    exact_spectrum roots(size);
    for (std::size_t k = 0; k < size; ++k)
        roots[k] = std::polar(1.0, sign * 2.0 * M_PI * static_cast<double>(k) / static_cast<double>(size));
    exact_spectrum sums(bins);
    for (std::size_t k = 0; k < bins; ++k)
        for (std::size_t m = 0; m < size; ++m)
            sums[k] += std::complex<double>(in[m].re, in[m].im) * roots[k * m % size];
    return sums;
}

exact_spectrum real_parts_in_pairs(const exact_spectrum& values) {
    exact_spectrum pairs;
    for (std::size_t i = 0; i + 1 < values.size(); i += 2)
        pairs.emplace_back(values[i].real(), values[i + 1].real());
    return pairs;
}

task make_task(transform_kind kind, int size, std::uint32_t seed) {
    std::mt19937 random(seed);
    std::uniform_real_distribution<double> uniform(-1.0, 1.0);
    const auto count = static_cast<std::size_t>(size);
    std::vector<complex32f> in(count);
    for (complex32f& value : in) {
        value.re = static_cast<float>(uniform(random));
        value.im = kind == transform_kind::real_forward ? 0.0F : static_cast<float>(uniform(random));
    }
    if (kind == transform_kind::real_inverse) {
        in[0].im = in[count / 2].im = 0.0F;
        for (std::size_t k = 1; k < count / 2; ++k)
            in[count - k] = {in[k].re, -in[k].im};
        return {in, real_parts_in_pairs(defining_sums(in, count, 1.0))};
    }
    const std::size_t bins = kind == transform_kind::real_forward ? count / 2 + 1 : count;
    return {in, defining_sums(in, bins, kind == transform_kind::complex_inverse ? 1.0 : -1.0)};
}

/// Of `out` times `scale`.
double relative_rms_error(const exact_spectrum& exact, const complex32f* out, double scale) {
    double error = 0.0;
    double power = 0.0;
    for (std::size_t k = 0; k < exact.size(); ++k) {
        error += std::norm(scale * std::complex<double>(out[k].re, out[k].im) - exact[k]);
        power += std::norm(exact[k]);
    }
    return std::sqrt(error / power);
}

/// The engine's own transform, with its input and output.
class own_transform {
public:
    own_transform(transform_kind kind, int size)
        : kind_(kind),
          size_(size),
          in_(qnl_make_buffer_32fc(size)),
          samples_(qnl_make_buffer_32f(size)),
          out_(qnl_make_buffer_32fc(size)) {
        if (kind == transform_kind::real_forward || kind == transform_kind::real_inverse)
            real_ = std::make_unique<real_transform>(size);
        else
            complex_ = std::make_unique<complex_transform>(size);
    }
    void give(const task& task) {
        std::copy(task.in.begin(), task.in.end(), in_.get());
        qnl_get_real_part(in_.get(), samples_.get(), size_);
    }
    void run() {
        switch (kind_) {
        case transform_kind::complex_forward:
            return complex_->forward(in_.get(), out_.get());
        case transform_kind::complex_inverse:
            return complex_->inverse(in_.get(), out_.get());
        case transform_kind::real_forward:
            return real_->forward(samples_.get(), out_.get());
        default:
            return real_->inverse(in_.get(), reinterpret_cast<float*>(out_.get()));
        }
    }
    double error(const task& task) {
        give(task);
        run();
        const bool inverse =
            kind_ == transform_kind::complex_inverse || kind_ == transform_kind::real_inverse;
        return relative_rms_error(task.exact, out_.get(), inverse ? size_ : 1.0);
    }

private:
    transform_kind kind_;
    int size_;
    qnl_buffer_32fc in_;
    qnl_buffer_32f samples_;
    qnl_buffer_32fc out_;
    std::unique_ptr<complex_transform> complex_;
    std::unique_ptr<real_transform> real_;
};

void give(fftw_transform& peer, transform_kind kind, const task& task) {
    if (kind == transform_kind::real_forward)
        qnl_get_real_part(task.in.data(), reinterpret_cast<float*>(peer.in()),
                          static_cast<int>(task.in.size()));
    else
        std::copy(task.in.begin(), task.in.end(), peer.in());
}

void compare_errors(benchmark::State& state, transform_kind kind, int size) {
    constexpr std::uint32_t inputs = 64;
    const std::pair<fftw_planning, const char*> plans[] = {{fftw_planning::estimated, "fftw_estimate_error"},
                                                           {fftw_planning::measured, "fftw_measure_error"},
                                                           {fftw_planning::patient, "fftw_patient_error"}};
    std::vector<task> tasks;
    for (std::uint32_t seed = 1; seed <= inputs; ++seed)
        tasks.push_back(make_task(kind, size, seed));
    own_transform own(kind, size);
    double sum = 0.0;
    for (const task& task : tasks)
        sum += own.error(task);
    state.counters["error"] = sum / inputs;
    for (const auto& [planning, name] : plans) {
        const std::unique_ptr<fftw_transform> peer = fftw_transform::make(kind, size, planning);
        if (!peer)
            return;
        double peer_sum = 0.0;
        for (const task& task : tasks) {
            give(*peer, kind, task);
            peer->run();
            peer_sum += relative_rms_error(task.exact, peer->out(), 1.0);
        }
        state.counters[name] = peer_sum / inputs;
    }
}

/// Arguments: kind, size. Both take turns, so that whatever else the machine does hits them alike.
void transform(benchmark::State& state) {
    constexpr int rounds = 1001;
    constexpr int calls = 64;
    const char* const names[] = {"complex forward", "complex inverse", "real forward", "real inverse"};
    const auto kind = static_cast<transform_kind>(state.range(0));
    const auto size = static_cast<int>(state.range(1));
    const task task = make_task(kind, size, 1);
    own_transform own(kind, size);
    own.give(task);
    const std::unique_ptr<fftw_transform> peer = fftw_transform::make(kind, size);
    if (peer)
        give(*peer, kind, task);
    std::vector<double> own_times;
    std::vector<double> peer_times;
    std::vector<double> construction_times;
    for (auto _ : state)
        for (int round = 0; round < rounds; ++round) {
            own_times.push_back(nanoseconds([&own] { own.run(); }, calls));
            if (peer)
                peer_times.push_back(nanoseconds([&peer] { peer->run(); }, calls));
            construction_times.push_back(nanoseconds([=] { own_transform another(kind, size); }, 1));
        }
    state.SetLabel(names[state.range(0)]);
    state.counters["ns"] = median(own_times);
    state.counters["construction_us"] = median(construction_times) / 1000.0;
    if (peer) {
        state.counters["fftw_ns"] = median(peer_times);
        state.counters["ratio"] = median(own_times) / median(peer_times);
    }
    compare_errors(state, kind, size);
}
BENCHMARK(transform)
    ->ArgsProduct({{0, 1, 2, 3}, {512, 960, 1024, 2048}})
    ->ArgNames({"kind", "size"})
    ->Iterations(1);

} // namespace

int main(int argc, char** argv) {
    qnl_start_vector_layer();
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
