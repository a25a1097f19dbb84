#ifndef VESK_QUANTIZER_VECTORQUANTIZER2D_H
#define VESK_QUANTIZER_VECTORQUANTIZER2D_H

#include <vesk/Export.h>

#include <cstddef>
#include <functional>
#include <list>
#include <string>
#include <vector>

namespace Vesk::ML {

/// Told, for one trace of a codebook training, how many positions each filter left. First the
/// repeated-position filter's count, then the proximity filter's, then the end of the trace.
enum class CodebookTrainingEvent {
    AfterEqFilter,    ///< repeated positions were dropped
    AfterProxFilter,  ///< and those too close to the last kept
    EndOfTrace        ///< the trace's directions are taken
};
/// Told of every event with the count of positions left; 0 at the end of a trace.
using CodebookTrainingObserver = std::function<void(CodebookTrainingEvent, std::size_t count)>;

/// Turns a 2D trace into direction symbols: indices into a codebook of directions.
///
/// A position is a vector with x at index 0 and y at index 1 (at least two elements; asserted in
/// debug builds); a trace is a vector of positions in the order of time, P of them. Directions are
/// angles in degrees, from the positive x axis towards the positive y axis. A `proxFilterThreshold`
/// is a distance in the positions' unit. The size of the codebook is the `vocabSize` of the models
/// that take the symbols.
///
/// Const operations may be called from several threads while none changes the object.
class VESK_API VectorQuantizer2D {
public:
    bool codebookReady;            ///< a codebook was set, generated or loaded
    int codebookSize;              ///< number of entries to work with; 0 at first
    std::vector<double> codebook;  ///< reference directions in degrees, normally in [0, 360)

    /// No codebook, of size 0.
    VectorQuantizer2D();
    VectorQuantizer2D(const VectorQuantizer2D&) = default;
    VectorQuantizer2D(VectorQuantizer2D&&) = default;
    VectorQuantizer2D& operator=(const VectorQuantizer2D&) = default;
    VectorQuantizer2D& operator=(VectorQuantizer2D&&) = default;
    virtual ~VectorQuantizer2D();

    /// Does nothing.
    virtual void stop();

    // Codebook

    /// Takes `codebook` over and with it its size.
    void setCodebook(std::vector<double> codebook);

    /// Appends n evenly spaced directions from 0, adding up a single-precision step of 360 / n,
    /// and sets `codebookSize` to n. Existing entries stay in front. n below 1 appends nothing.
    /// O(n).
    void initializeCodebook(int n);

    /// Learns the codebook from traces: the directions of all of them are clustered from the
    /// present codebook on (KMeansMotionVec, threshold one degree). Returns a copy of it.
    ///
    /// A quantiser that is not ready first gets `initializeCodebook(codebookSize)`. Writes two
    /// counts and an empty line a trace to standard output. std::bad_alloc, with nothing
    /// learnt, for a trace of which the filters leave nothing (fewer than two distinct
    /// positions); std::out_of_range as ProximityFilter. The clusterer it makes is never freed.
    /// O(angles log angles), and as KMeansMotionVec::learn for each of its iterations.
    std::vector<double> trainCodebook(std::list<std::vector<std::vector<double>>>& traces,
                                      float proxFilterThreshold);

    /// `trainCodebook` that writes nothing, frees what it made, and tells the observer.
    std::vector<double> learnCodebook(const std::list<std::vector<std::vector<double>>>& traces,
                                      float proxFilterThreshold,
                                      const CodebookTrainingObserver& observer = {});

    // Conversion

    /// rad times 57.29577951308232, 180 / pi.
    double radToDeg(double rad);

    /// The direction of every step: P - 1 angles in [0, 360], from the arctangent of the slope
    /// with quadrant correction. A vertical step is 90 where y grows and 270 where it falls; a
    /// repeated position counts as falling. One angle of 0.0 for fewer than two positions. O(P).
    std::vector<double> convertSequence(std::vector<std::vector<double>>& trace);

    /// The symbols of a trace: drops repeated positions and positions closer than
    /// `proxFilterThreshold` to the last kept, and maps each remaining step to the nearest
    /// codebook entry (ties: the lowest index).
    ///
    /// `rotationAllowed` makes symbols relative to the first, modulo `codebookSize`. Empty where
    /// `codebookSize` is below 1 or fewer than two positions remain. std::out_of_range as
    /// ProximityFilter, std::invalid_argument for an empty codebook with a size.
    /// The clusterer that every call makes is never freed: `quantize` gives the same answer
    /// without that. O((P + k) log k), k codebook entries.
    std::vector<int> classify(std::vector<std::vector<double>>& trace, float proxFilterThreshold,
                              bool rotationAllowed);

    /// `classify` that leaves nothing allocated.
    std::vector<int> quantize(const std::vector<std::vector<double>>& trace,
                              float proxFilterThreshold, bool rotationAllowed) const;

    /// `classify` without rotation, runs of equal symbols collapsed to one. Empty for fewer than
    /// two symbols.
    std::vector<int> classifyAndFilter(std::vector<std::vector<double>>& trace,
                                       float proxFilterThreshold);

    // Codebook file: one entry a line, six significant digits, no line end after the last

    /// Writes the file; returns whether it could be opened.
    bool printCodebook(char* path);
    /// The same for a literal or a string of the host's.
    bool printCodebook(const char* path) { return printCodebook(const_cast<char*>(path)); }

    /// Writes the same file: true only when every byte was written and the file closed.
    bool save(const std::string& path) const;

    /// Replaces the codebook by the file's; returns whether it could be opened (else the codebook
    /// is empty and `codebookReady` as it was). A line without a number counts as 0, a blank line
    /// repeats the line before. std::bad_alloc for more entries than docs/formats.md allows.
    bool loadCodebook(char* path);
    /// The same for a literal or a string of the host's.
    bool loadCodebook(const char* path) { return loadCodebook(const_cast<char*>(path)); }
};

}  // namespace Vesk::ML

#endif
