#ifndef VESK_TESTS_SUPPORT_QUANTIZERREFERENCE_H
#define VESK_TESTS_SUPPORT_QUANTIZERREFERENCE_H

#include <cmath>
#include <cstddef>
#include <fstream>
#include <list>
#include <new>
#include <ostream>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

/// The quantiser and its clusterer again, step by step and as slow as it reads: the oracle of the
/// tests. Shares no code with the library.
namespace Vesk::Test::Reference {

using Position = std::vector<double>;
using Trace = std::vector<Position>;

inline constexpr const char* rangeCheckText = "vector::_M_range_check";

// Directions

inline double radToDeg(double rad) { return rad * 57.29577951308232; }

inline std::vector<double> convertSequence(const Trace& trace) {
    if (trace.size() < 2) return {0.0};
    std::vector<double> angles;
    double prevX = trace[0][0];
    double prevY = trace[0][1];
    for (std::size_t i = 1; i < trace.size(); ++i) {
        const double curX = trace[i][0];
        const double curY = trace[i][1];
        double angle = 0.0;
        if (curX == prevX) {
            if (prevY < curY) {
                angle = 90.0;
            } else {
                angle = 270.0;
            }
        } else {
            angle = radToDeg(std::atan((curY - prevY) / (curX - prevX)));
            if (prevX > curX) angle = angle + 180.0;
            if (angle < 0.0) angle = angle + 360.0;
        }
        angles.push_back(angle);
        prevX = curX;
        prevY = curY;
    }
    return angles;
}

// Filters: they append, they never clear

inline void eqFilter(const Trace& in, Trace& out) {
    if (in.size() < 2) return;
    out.push_back(in[0]);
    for (std::size_t i = 1; i < in.size(); ++i) {
        bool equal = in[i].size() == in[i - 1].size();
        for (std::size_t k = 0; equal && k < in[i].size(); ++k) {
            if (!(in[i][k] == in[i - 1][k])) equal = false;
        }
        if (!equal) out.push_back(in[i]);
    }
}

inline void proximityFilter(const Trace& in, Trace& out, double threshold) {
    if (in.size() < 2) return;
    out.push_back(in[0]);
    for (std::size_t i = 1; i < in.size(); ++i) {
        const Position last = out[out.size() - 1];
        double sum = 0.0;
        for (std::size_t k = 0; k < in[i].size(); ++k) {
            if (k >= last.size()) throw std::out_of_range(rangeCheckText);
            const double difference = in[i][k] - last[k];
            const double square = difference * difference;
            sum = sum + square;
        }
        const double distance = std::sqrt(sum);
        if (distance >= threshold) out.push_back(in[i]);
    }
}

// Clustering

/// To [0, 360).
inline double reduce(double angle) {
    double reduced = std::fmod(angle, 360.0);
    if (reduced < 0.0) reduced = reduced + 360.0;
    if (reduced == 360.0) reduced = 0.0;
    return reduced;
}

inline double circularDistance(double angle, double centre) {
    const double d = std::fabs(reduce(angle) - reduce(centre));
    return d < 360.0 - d ? d : 360.0 - d;
}

inline int nearestCentre(double angle, const std::vector<double>& centres) {
    if (centres.empty()) throw std::invalid_argument("no centres");
    if (!std::isfinite(angle)) return 0;
    int best = -1;
    double bestDistance = 0.0;
    for (std::size_t c = 0; c < centres.size(); ++c) {
        if (!std::isfinite(centres[c])) continue;
        const double distance = circularDistance(angle, centres[c]);
        if (best < 0 || distance < bestDistance) {
            best = static_cast<int>(c);
            bestDistance = distance;
        }
    }
    return best < 0 ? 0 : best;
}

inline std::vector<std::vector<int>> classifyAngles(const std::vector<double>& centres,
                                                    const std::vector<std::vector<double>>& data) {
    std::vector<std::vector<int>> result;
    for (const std::vector<double>& row : data) {
        std::vector<int> indices;
        for (const double angle : row) indices.push_back(nearestCentre(angle, centres));
        result.push_back(indices);
    }
    return result;
}

/// Lloyd's iterations; `iterations`, where given, is told how many updates were made.
inline std::vector<double> learn(std::vector<double> centres,
                                 const std::vector<std::vector<double>>& data, int maxIterations,
                                 double threshold, int* iterations = nullptr) {
    constexpr double pi = 3.141592653589793;
    constexpr int tooMany = 100000;
    if (iterations != nullptr) *iterations = 0;
    if (centres.empty()) return centres;

    std::vector<double> angles;
    for (const std::vector<double>& row : data) {
        for (const double angle : row) {
            if (std::isfinite(angle)) angles.push_back(reduce(angle));
        }
    }

    std::vector<int> previous;
    for (int iteration = 0; maxIterations < 0 || iteration < maxIterations; ++iteration) {
        if (iteration == tooMany) throw std::logic_error("the reference does not converge");
        std::vector<int> assignment;
        for (const double angle : angles) assignment.push_back(nearestCentre(angle, centres));
        if (iteration > 0 && assignment == previous) break;
        previous = assignment;

        double largestMovement = 0.0;
        for (std::size_t c = 0; c < centres.size(); ++c) {
            double sines = 0.0;
            double cosines = 0.0;
            int members = 0;
            for (std::size_t i = 0; i < angles.size(); ++i) {
                if (assignment[i] != static_cast<int>(c)) continue;
                sines += std::sin(angles[i] * pi / 180.0);
                cosines += std::cos(angles[i] * pi / 180.0);
                ++members;
            }
            if (members == 0) continue;
            if (std::sqrt(sines * sines + cosines * cosines) / members < 1e-12) continue;
            const double mean = reduce(std::atan2(sines, cosines) * 180.0 / pi);
            const double movement =
                std::isfinite(centres[c]) ? circularDistance(mean, centres[c]) : 360.0;
            if (movement > largestMovement) largestMovement = movement;
            centres[c] = mean;
        }
        if (iterations != nullptr) *iterations = iteration + 1;
        if (largestMovement < threshold) break;
    }
    return centres;
}

// The quantiser

struct Quantizer {
    bool codebookReady = false;
    int codebookSize = 0;
    std::vector<double> codebook;
};

inline void setCodebook(Quantizer& quantizer, const std::vector<double>& codebook) {
    quantizer.codebook = codebook;
    quantizer.codebookReady = true;
    quantizer.codebookSize = static_cast<int>(codebook.size());
}

inline void initializeCodebook(Quantizer& quantizer, int n) {
    quantizer.codebookSize = n;
    const float singleStep = 360.0f / static_cast<float>(n);
    const double step = static_cast<double>(singleStep);
    double value = 0.0;
    for (int i = 0; i < n; ++i) {
        quantizer.codebook.push_back(value);
        value = value + step;
    }
    quantizer.codebookReady = true;
}

inline std::vector<int> classify(const Quantizer& quantizer, const Trace& trace,
                                 float proxFilterThreshold, bool rotationAllowed) {
    if (quantizer.codebookSize < 1) return {};
    Trace eq;
    eqFilter(trace, eq);
    Trace prox;
    proximityFilter(eq, prox, static_cast<double>(proxFilterThreshold));
    const std::vector<double> angles = convertSequence(prox);
    if (prox.size() <= 1) return {};
    std::vector<int> row = classifyAngles(quantizer.codebook, {angles})[0];
    if (rotationAllowed) {
        if (row.empty()) throw std::out_of_range(rangeCheckText);
        const int base = row[0];
        for (int& symbol : row) {
            symbol = symbol - base;
            if (symbol < 0) symbol = symbol + quantizer.codebookSize;
        }
    }
    return row;
}

inline std::vector<int> classifyAndFilter(const Quantizer& quantizer, const Trace& trace,
                                          float proxFilterThreshold) {
    if (quantizer.codebookSize < 1) return {};
    const std::vector<int> symbols = classify(quantizer, trace, proxFilterThreshold, false);
    if (symbols.size() < 2) return {};
    std::vector<int> result = {symbols[0]};
    for (std::size_t i = 1; i < symbols.size(); ++i) {
        if (symbols[i] != symbols[i - 1]) result.push_back(symbols[i]);
    }
    return result;
}

inline std::vector<double> trainCodebook(Quantizer& quantizer, const std::list<Trace>& traces,
                                         float proxFilterThreshold, std::ostream& out) {
    if (!quantizer.codebookReady) initializeCodebook(quantizer, quantizer.codebookSize);
    std::vector<std::vector<double>> data;
    for (const Trace& trace : traces) {
        Trace eq;
        eqFilter(trace, eq);
        out << eq.size() << " positions after eq filter\n";
        Trace prox;
        proximityFilter(eq, prox, static_cast<double>(proxFilterThreshold));
        out << prox.size() << " positions after prox filter\n";
        const std::vector<double> angles = convertSequence(prox);
        if (prox.empty()) throw std::bad_alloc();
        std::vector<double> row;
        for (std::size_t i = 0; i < prox.size() - 1; ++i) row.push_back(angles[i]);
        data.push_back(row);
        out << "\n";
    }
    quantizer.codebook = learn(quantizer.codebook, data, -1, 1.0);
    return quantizer.codebook;
}

// The codebook file

inline std::string codebookText(const std::vector<double>& codebook) {
    std::ostringstream text;
    for (std::size_t i = 0; i < codebook.size(); ++i) {
        text << codebook[i];
        if (i + 1 < codebook.size()) text << "\n";
    }
    return text.str();
}

inline bool loadCodebook(Quantizer& quantizer, const std::string& path) {
    quantizer.codebookSize = 0;
    quantizer.codebook.clear();
    std::ifstream in(path);
    if (!in.is_open()) return false;
    double value = 0.0;
    while (!in.eof()) {
        std::string line;
        std::getline(in, line);
        if (in.bad()) break;
        std::istringstream words(line);
        words >> value;
        quantizer.codebook.push_back(value);
    }
    quantizer.codebookReady = true;
    quantizer.codebookSize = static_cast<int>(quantizer.codebook.size());
    return true;
}

}  // namespace Vesk::Test::Reference

#endif
