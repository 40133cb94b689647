#pragma once

#include <algorithm>
#include <cmath>
#include <complex>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <numeric>
#include <vector>

// Measures of a rendered recording, written for clearness and not for speed.
namespace recordings_test {

inline constexpr double kFramesPerMs = 96.0;
inline constexpr double kRateHz = 96000.0;
inline constexpr std::size_t kHeaderBytes = 44;

using Bytes = std::vector<unsigned char>;
using Signal = std::vector<float>;

inline Bytes readBytes(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

struct Recording {
    Bytes bytes;
    Signal left;
    Signal right;
    Signal mid; // half the sum

    explicit Recording(const std::filesystem::path& path) : bytes(readBytes(path)) {
        const std::size_t count =
            bytes.size() < kHeaderBytes ? 0 : (bytes.size() - kHeaderBytes) / 6;
        left.resize(count);
        right.resize(count);
        mid.resize(count);
        for (std::size_t frame = 0; frame < count; ++frame) {
            left[frame] = sampleAt(kHeaderBytes + 6 * frame);
            right[frame] = sampleAt(kHeaderBytes + 6 * frame + 3);
            mid[frame] = 0.5F * (left[frame] + right[frame]);
        }
    }

    std::size_t frames() const { return left.size(); }
    float level(std::size_t frame) const {
        return std::max(std::abs(left[frame]), std::abs(right[frame]));
    }
    float peak() const {
        const auto [low, high] = std::minmax_element(left.begin(), left.end());
        const auto [lowest, highest] = std::minmax_element(right.begin(), right.end());
        return std::max({-*low, *high, -*lowest, *highest});
    }

private:
    float sampleAt(std::size_t at) const {
        const std::uint32_t high = (std::uint32_t{bytes[at]} << 8) |
                                   (std::uint32_t{bytes[at + 1]} << 16) |
                                   (std::uint32_t{bytes[at + 2]} << 24);
        return static_cast<float>(static_cast<std::int32_t>(high)) * 0x1.0p-31F;
    }
};

inline double decibels(double ratio) {
    return 20.0 * std::log10(std::max(ratio, 1e-30));
}

inline double dot(const Signal& a, const Signal& b) {
    double sum = 0.0;
    for (std::size_t frame = 0; frame < a.size(); ++frame) {
        sum += static_cast<double>(a[frame]) * static_cast<double>(b[frame]);
    }
    return sum;
}

// By halves, size a power of two; each pass puts what belongs together side by side.
inline void fourier(std::vector<std::complex<double>>& bins) {
    std::vector<std::complex<double>> sorted(bins.size());
    for (std::size_t half = bins.size() / 2, stride = 1; half > 0; half /= 2, stride *= 2) {
        for (std::size_t at = 0; at < half * stride; ++at) {
            const std::size_t turn = at / stride * stride;
            const auto odd = bins[at] - bins[at + half * stride];
            sorted[at + turn] = bins[at] + bins[at + half * stride];
            sorted[at + turn + stride] =
                odd * std::polar(1.0, -std::acos(-1.0) * static_cast<double>(turn) /
                                          static_cast<double>(half * stride));
        }
        bins.swap(sorted);
    }
}

// Power of each frequency, summed over half-overlapping Hann frames of [fromMs, toMs).
struct Spectrum {
    std::vector<double> power;
    double binHz;

    Spectrum(const Signal& signal, double fromMs, double toMs, std::size_t size = 2048)
        : power(size / 2), binHz(kRateHz / static_cast<double>(size)) {
        const auto last = std::min(signal.size(), static_cast<std::size_t>(toMs * kFramesPerMs));
        std::vector<std::complex<double>> bins(size);
        for (auto start = static_cast<std::size_t>(fromMs * kFramesPerMs); start + size <= last;
             start += size / 2) {
            for (std::size_t at = 0; at < size; ++at) {
                const double turn = static_cast<double>(at) / static_cast<double>(size);
                const double window = 0.5 - 0.5 * std::cos(2.0 * std::acos(-1.0) * turn);
                bins[at] = window * static_cast<double>(signal[start + at]);
            }
            fourier(bins);
            for (std::size_t bin = 0; bin < power.size(); ++bin) {
                power[bin] += std::norm(bins[bin]);
            }
        }
    }

    double powerBetween(double lowHz, double highHz) const {
        const auto bin = [this](double hz) { return static_cast<std::ptrdiff_t>(hz / binHz); };
        return std::accumulate(power.begin() + bin(lowHz), power.begin() + bin(highHz), 0.0);
    }
    double centroidHz() const {
        double weighted = 0.0;
        for (std::size_t bin = 0; bin < power.size(); ++bin) {
            weighted += static_cast<double>(bin) * binHz * power[bin];
        }
        return weighted / powerBetween(0.0, kRateHz / 2.0);
    }
    double strongestHz() const {
        const auto strongest = std::max_element(power.begin(), power.end());
        return static_cast<double>(std::distance(power.begin(), strongest)) * binHz;
    }
};

// Twice the time from -5 to -35 dB of the energy that is still to come.
inline double t60Ms(const Signal& signal) {
    std::vector<double> toCome(signal.size());
    double sum = 0.0;
    for (std::size_t frame = signal.size(); frame-- > 0;) {
        sum += static_cast<double>(signal[frame]) * static_cast<double>(signal[frame]);
        toCome[frame] = sum;
    }
    const auto fallenTo = [&](double levelDb) {
        const double energy = sum * std::pow(10.0, levelDb / 10.0);
        return std::lower_bound(toCome.begin(), toCome.end(), energy, std::greater<>());
    };
    return 2.0 * static_cast<double>(std::distance(fallenTo(-5.0), fallenTo(-35.0))) / kFramesPerMs;
}

} // namespace recordings_test
