#include <veskkit/Error.h>
#include <veskkit/internal/Decimal.h>
#include <veskkit/internal/Text.h>
#include <veskkit/recognition/ModelCheck.h>
#include <veskkit/recognition/ModelText.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <istream>
#include <limits>
#include <locale>
#include <optional>
#include <sstream>
#include <string_view>
#include <type_traits>
#include <utility>

namespace Vesk::Kit {

using internal::joined;
using internal::quoted;
using Vesk::Math::MatrixT;
using Vesk::ML::HMM;
using Vesk::ML::LeftRightHMM;
using Vesk::ML::RecognitionModelHMM;

namespace {

// Tables hold at most as many values as a 32-bit position can tell apart: 46340^2 < 2^31.
constexpr std::uint64_t mostStates = 46340;
constexpr std::uint64_t mostSymbols = 1000000;
constexpr std::uint64_t mostValues = std::numeric_limits<std::int32_t>::max();

/// Takes words from a model's text and turns them into numbers as `istream >>` does, but for words
/// that are not numbers from end to end.
class Words {
public:
    Words(std::istream& stream, std::string name) : in(stream), source(std::move(name)) {
        converter.imbue(std::locale::classic());
        // An allocation that fails inside an extraction is not to pass for a bad number.
        converter.exceptions(std::ios_base::badbit);
    }

    /// Skips white space; whether anything follows.
    bool more() {
        for (int c = peek(); c != end; c = peek()) {
            if (c != ' ' && (c < '\t' || c > '\r')) return true;
            if (c == '\n') ++line;
            advance();
        }
        return false;
    }

    /// The next word, up to the next call. `what` it has to be is for the message: a callable that
    /// makes the text.
    template <typename What>
    std::string_view word(const What& what) {
        if (!more()) fail("the end of the file", what);
        std::size_t length = lengthOfWord();
        if (next + length < filled) return taken(length);
        // It goes on where the buffer ends, or may do so.
        cut.clear();
        do {
            cut += taken(length);
            if (cut.size() > longestWord) fail("a word of more than 4096 characters", what);
            length = peek() == end ? 0 : lengthOfWord();
        } while (length > 0);
        return cut;
    }

    template <typename T, typename What>
    T number(const What& what) {
        const std::string_view found = word(what);
        if constexpr (std::is_same_v<T, double>) {
            if (const std::optional<double> value = internal::shortDecimal(found)) return *value;
        }
        T value{};
        converter.clear();
        converter.str(std::string(found));
        if (!(converter >> value) || converter.peek() != end)
            fail(quoted(std::string(found)), what);
        return value;
    }

    /// A count from `least` to `most`.
    template <typename What>
    unsigned int count(std::uint64_t least, std::uint64_t most, const What& what) {
        const auto found = number<std::int64_t>(what);
        if (found < static_cast<std::int64_t>(least) || found > static_cast<std::int64_t>(most)) {
            fail(joined(found), [&] { return joined(what(), " from ", least, " to ", most); });
        }
        return static_cast<unsigned int>(found);
    }

    /// `count` finite numbers; `name` tells the i-th.
    template <typename Name>
    std::vector<double> parameters(std::uint64_t count, const Name& name) {
        std::vector<double> values;
        for (std::uint64_t i = 0; i < count; ++i) {
            values.push_back(number<double>([&] { return "a finite number for " + name(i); }));
        }
        return values;
    }

    template <typename What>
    [[noreturn]] void fail(const std::string& found, const What& what) const {
        throw InputError(
            joined(internal::oneLine(source), ':', line, ": found ", found, ", expected ", what()));
    }

private:
    static constexpr std::size_t longestWord = 4096;
    static constexpr int end = std::istream::traits_type::eof();

    int peek() {
        if (next == filled) {
            in.read(buffer.data(), static_cast<std::streamsize>(buffer.size()));
            next = 0;
            filled = static_cast<std::size_t>(in.gcount());
            if (filled == 0) return end;
        }
        return std::istream::traits_type::to_int_type(buffer[next]);
    }
    void advance() { ++next; }

    /// How many of the buffer's characters from `next` on are no white space.
    std::size_t lengthOfWord() const {
        std::size_t i = next;
        while (i < filled && buffer[i] != ' ' && (buffer[i] < '\t' || buffer[i] > '\r')) ++i;
        return i - next;
    }

    std::string_view taken(std::size_t length) {
        const std::string_view result(buffer.data() + next, length);
        next += length;
        return result;
    }

    std::istream& in;
    std::array<char, 4096> buffer;  ///< the stream's characters from `next` to `filled`
    std::size_t next = 0;
    std::size_t filled = 0;
    std::string cut;  ///< a word that the end of the buffer cut
    std::string source;
    std::size_t line = 1;
    std::istringstream converter;
};

MatrixT<double> matrix(unsigned int rows, unsigned int cols, std::vector<double> values) {
    MatrixT<double> result;
    result.data = std::move(values);
    result.rows = static_cast<int>(rows);
    result.cols = static_cast<int>(cols);
    return result;
}

/// What the blocks of the combined model and of a gesture have in common.
struct Parameters {
    std::vector<double> pi;
    MatrixT<double> a;
    MatrixT<double> b;
};

Parameters readParameters(Words& words, unsigned int N, unsigned int M, const std::string& owner) {
    const auto at = [&owner](const char* table, std::uint64_t i, std::uint64_t cols) {
        return joined(table, '(', i / cols, ", ", i % cols, ") of ", owner);
    };
    Parameters result;
    result.pi =
        words.parameters(N, [&](std::uint64_t i) { return joined("pi(", i, ") of ", owner); });
    result.a = matrix(N, N, words.parameters(std::uint64_t{N} * N, [&](std::uint64_t i) {
        return at("a", i, N);
    }));
    result.b = matrix(N, M, words.parameters(std::uint64_t{N} * M, [&](std::uint64_t i) {
        return at("b", i, M);
    }));
    return result;
}

struct Counts {
    unsigned int N;
    unsigned int M;
};

Counts readCounts(Words& words, const std::string& owner) {
    Counts counts{};
    counts.N = words.count(1, mostStates, [&] { return "a number of states of " + owner; });
    const std::uint64_t fitting = std::min(mostSymbols, mostValues / counts.N);
    counts.M = words.count(1, fitting, [&] { return "a number of symbols of " + owner; });
    words.number<int>([&] { return "the dimension of " + owner; });
    return counts;
}

RecognitionModelHMM readHeader(Words& words) {
    RecognitionModelHMM model;
    model.proxFilterThreshold =
        words.number<float>([] { return "a model file, which begins with a proximity threshold"; });
    model.rotationAllowed = words.number<int>([] { return "1 or 0 for rotation"; }) == 1;
    const unsigned int codebookSize =
        words.count(1, mostSymbols, [] { return "a number of directions"; });
    for (unsigned int k = 0; k < codebookSize; ++k) {
        model.codebook.push_back(
            words.number<double>([k] { return joined("direction ", k, " of the codebook"); }));
    }
    model.name = words.word([] { return "the model's name"; });
    const std::string owner = "the threshold model";
    const Counts counts = readCounts(words, owner);
    model.numStates = counts.N;
    model.vocabSize = counts.M;
    model.modelTransitionProb = words.number<double>([] { return "a transition probability"; });
    Parameters parameters = readParameters(words, counts.N, counts.M, owner);
    model.pi = std::move(parameters.pi);
    model.a = std::move(parameters.a);
    model.b = std::move(parameters.b);
    model.vocab = matrix(counts.M, 1, words.parameters(counts.M, [](std::uint64_t k) {
        return joined("the value of symbol ", k);
    }));
    return model;
}

LeftRightHMM readGesture(Words& words, const MatrixT<double>& vocab) {
    const std::string name(words.word([] { return "a gesture's name"; }));
    const std::string owner = "gesture " + quoted(name);
    const Counts counts = readCounts(words, owner);
    const int delta = words.number<int>([&] { return "the largest jump of " + owner; });
    Parameters parameters = readParameters(words, counts.N, counts.M, owner);
    LeftRightHMM gesture(static_cast<int>(counts.N), static_cast<int>(counts.M), delta);
    gesture.name = name;
    gesture.vocab = vocab;
    gesture.pi = std::move(parameters.pi);
    gesture.a = std::move(parameters.a);
    gesture.b = std::move(parameters.b);
    return gesture;
}

}  // namespace

std::string modelText(const RecognitionModelHMM& model) {
    requireSoundModel(model, "model");
    RecognitionModelHMM writer = model;
    std::stringstream out;
    // An allocation that fails on the way is not to pass for the end of the text.
    out.exceptions(std::ios_base::badbit);
    writer.writeToStream(out, nullptr);
    out << '\n';
    for (HMM* gesture : writer.gestures) {
        writer.writeToStream(out, gesture);
        out << '\n';
    }
    return out.str();
}

RecognitionModel parseModel(std::istream& in, const std::string& source) {
    Words words(in, source);
    const RecognitionModelHMM header = readHeader(words);
    RecognitionModel model;
    while (words.more()) model.add(readGesture(words, header.vocab));
    if (in.bad()) throw InputError(internal::oneLine(source) + ": cannot be read");
    model.build(header);
    requireSoundModel(model.get(), source);
    return model;
}

RecognitionModel asStored(const RecognitionModel& model) {
    std::istringstream text(modelText(model.get()));
    return parseModel(text, "model");
}

}  // namespace Vesk::Kit
