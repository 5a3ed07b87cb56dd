// The transforms beside FFTW's on the same input: time, its ratio, and the relative RMS errors of both
// against a transform in double precision.

#include <algorithm>
#include <cmath>
#include <complex>
#include <cstddef>
#include <memory>
#include <random>
#include <vector>

#include <benchmark/benchmark.h>

#include "dsp/discrete_transform.h"
#include "dsp/vector_targets.h"
#include "fftw_transform.h"
#include "timing.h"

namespace {

using exact_spectrum = std::vector<std::complex<double>>;

struct task {
    transform_kind kind;
    int size;
    std::vector<complex32f> in; ///< imaginary parts are 0 for a real transform
    exact_spectrum exact;       ///< unscaled; as many bins as the peer makes
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

task make_task(transform_kind kind, int size) {
    std::mt19937 random(1);
    std::uniform_real_distribution<float> uniform(-1.0F, 1.0F);
    const bool real = kind == transform_kind::real_forward;
    std::vector<complex32f> in(static_cast<std::size_t>(size));
    for (complex32f& value : in) {
        value.re = uniform(random);
        value.im = real ? 0.0F : uniform(random);
    }
    const auto bins = static_cast<std::size_t>(real ? size / 2 + 1 : size);
    const double sign = kind == transform_kind::complex_inverse ? 1.0 : -1.0;
    return {kind, size, in, defining_sums(in, bins, sign)};
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

/// The engine's own transform of a task, with its input and output.
class own_transform {
public:
    explicit own_transform(const task& task)
        : kind_(task.kind),
          in_(qnl_make_buffer_32fc(task.size)),
          samples_(qnl_make_buffer_32f(task.size)),
          out_(qnl_make_buffer_32fc(task.size)) {
        std::copy(task.in.begin(), task.in.end(), in_.get());
        qnl_get_real_part(in_.get(), samples_.get(), task.size);
        if (kind_ == transform_kind::real_forward)
            real_ = std::make_unique<real_transform>(task.size);
        else
            complex_ = std::make_unique<complex_transform>(task.size);
    }
    void run() {
        if (kind_ == transform_kind::real_forward)
            real_->forward(samples_.get(), out_.get());
        else if (kind_ == transform_kind::complex_forward)
            complex_->forward(in_.get(), out_.get());
        else
            complex_->inverse(in_.get(), out_.get());
    }
    double error(const task& task) const {
        const double scale = kind_ == transform_kind::complex_inverse ? task.size : 1.0;
        return relative_rms_error(task.exact, out_.get(), scale);
    }

private:
    transform_kind kind_;
    qnl_buffer_32fc in_;
    qnl_buffer_32f samples_;
    qnl_buffer_32fc out_;
    std::unique_ptr<complex_transform> complex_;
    std::unique_ptr<real_transform> real_;
};

void give_input(const task& task, fftw_transform& peer) {
    if (task.kind == transform_kind::real_forward)
        qnl_get_real_part(task.in.data(), reinterpret_cast<float*>(peer.in()), task.size);
    else
        std::copy(task.in.begin(), task.in.end(), peer.in());
}

/// Arguments: kind, size. Both take turns, so that whatever else the machine does hits them alike.
void transform(benchmark::State& state) {
    constexpr int rounds = 1001;
    constexpr int calls = 64;
    const char* const names[] = {"complex forward", "complex inverse", "real forward"};
    const task task =
        make_task(static_cast<transform_kind>(state.range(0)), static_cast<int>(state.range(1)));
    own_transform own(task);
    const std::unique_ptr<fftw_transform> peer = fftw_transform::make(task.kind, task.size);
    if (peer)
        give_input(task, *peer);
    std::vector<double> own_times;
    std::vector<double> peer_times;
    std::vector<double> construction_times;
    for (auto _ : state)
        for (int round = 0; round < rounds; ++round) {
            own_times.push_back(nanoseconds([&own] { own.run(); }, calls));
            if (peer)
                peer_times.push_back(nanoseconds([&peer] { peer->run(); }, calls));
            construction_times.push_back(nanoseconds([&task] { own_transform another(task); }, 1));
        }
    state.SetLabel(names[state.range(0)]);
    state.counters["ns"] = median(own_times);
    state.counters["error"] = own.error(task);
    state.counters["construction_us"] = median(construction_times) / 1000.0;
    if (peer) {
        state.counters["fftw_ns"] = median(peer_times);
        state.counters["ratio"] = median(own_times) / median(peer_times);
        state.counters["fftw_error"] = relative_rms_error(task.exact, peer->out(), 1.0);
    }
}
BENCHMARK(transform)->ArgsProduct({{0, 1, 2}, {512, 2048}})->ArgNames({"kind", "size"})->Iterations(1);

} // namespace

int main(int argc, char** argv) {
    qnl_start_vector_layer();
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
