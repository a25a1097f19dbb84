#include <vesk/quantizer/VectorQuantizer2D.h>

#include <cstddef>
#include <utility>

namespace Vesk::ML {

VectorQuantizer2D::VectorQuantizer2D() : codebookReady(false), codebookSize(0) {}

VectorQuantizer2D::~VectorQuantizer2D() = default;

void VectorQuantizer2D::stop() {}

void VectorQuantizer2D::setCodebook(std::vector<double> directions) {
    codebook = std::move(directions);
    codebookReady = true;
    codebookSize = static_cast<int>(codebook.size());
}

void VectorQuantizer2D::initializeCodebook(int n) {
    if (n > 0) codebook.reserve(codebook.size() + static_cast<std::size_t>(n));
    codebookSize = n;
    // A single-precision step, added up: 51.428569793701171875 for n = 7, not 360 / 7.
    const double step = 360.0F / static_cast<float>(n);
    double value = 0.0;
    for (int i = 0; i < n; ++i) {
        codebook.push_back(value);
        value += step;
    }
    codebookReady = true;
}

}  // namespace Vesk::ML
