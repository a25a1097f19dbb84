// A recogniser in an event loop that must not wait for it. The loop collects points; a finished
// stroke goes to a worker, whose answer comes back through a pipe that the loop polls with all
// else.
//
//   event_loop MODEL < events        events as live_training reads them, "down" without a name
//
// c++ -std=c++17 event_loop.cpp -o event_loop $(pkg-config --cflags --libs vesk-kit) -pthread

#include <veskkit/io/ModelFile.h>
#include <veskkit/recognition/GestureRecognizer.h>

#include <poll.h>
#include <unistd.h>

#include <array>
#include <condition_variable>
#include <deque>
#include <iostream>
#include <mutex>
#include <optional>
#include <sstream>
#include <stdexcept>
#include <string>
#include <thread>

using namespace Vesk::Kit;

namespace {

/// Recognises strokes on a thread of its own. A recogniser may be used from any number of threads;
/// what needs a lock is the two queues.
class Worker {
public:
    explicit Worker(GestureRecognizer recognizerToUse) : recognizer(std::move(recognizerToUse)) {
        if (pipe(ends.data()) != 0) throw std::runtime_error("no pipe");
        thread = std::thread([this] { work(); });
    }
    Worker(const Worker&) = delete;
    Worker& operator=(const Worker&) = delete;
    ~Worker() {
        submit(std::nullopt);
        thread.join();
        for (const int end : ends) close(end);
    }

    /// To be polled: readable when there is an answer.
    int answersReady() const { return ends[0]; }

    void submit(std::optional<Points> stroke) {
        const std::lock_guard lock(mutex);
        strokes.push_back(std::move(stroke));
        changed.notify_one();
    }

    /// One answer, where `answersReady` is readable.
    std::string answer() {
        char token = 0;
        if (read(ends[0], &token, 1) != 1) throw std::runtime_error("the worker is gone");
        const std::lock_guard lock(mutex);
        std::string first = std::move(answers.front());
        answers.pop_front();
        return first;
    }

private:
    void work() {
        for (;;) {
            std::unique_lock lock(mutex);
            changed.wait(lock, [this] { return !strokes.empty(); });
            const std::optional<Points> stroke = std::move(strokes.front());
            strokes.pop_front();
            lock.unlock();
            if (!stroke) return;
            const std::string text = judge(*stroke);
            lock.lock();
            answers.push_back(text);
            lock.unlock();
            if (write(ends[1], "", 1) != 1) return;
        }
    }

    std::string judge(const Points& stroke) const try {
        const Result result = recognizer.recognize(stroke);
        return result.recognized() ? result.gesture
                                   : std::string("rejected: ") + toString(result.rejection);
    } catch (const std::exception& problem) {
        return problem.what();
    }

    GestureRecognizer recognizer;
    std::array<int, 2> ends{};
    std::mutex mutex;
    std::condition_variable changed;
    std::deque<std::optional<Points>> strokes;  ///< nothing: no more will come
    std::deque<std::string> answers;
    std::thread thread;
};

/// The bytes of a descriptor, line by line.
class Lines {
public:
    explicit Lines(int file) : descriptor(file) {}

    /// Reads what is there; false at the end.
    bool fill() {
        std::array<char, 4096> bytes{};
        const ssize_t count = read(descriptor, bytes.data(), bytes.size());
        if (count <= 0) return false;
        text.append(bytes.data(), static_cast<std::size_t>(count));
        return true;
    }

    bool next(std::string& line) {
        const std::size_t end = text.find('\n');
        if (end == std::string::npos) return false;
        line = text.substr(0, end);
        text.erase(0, end + 1);
        return true;
    }

private:
    int descriptor;
    std::string text;
};

}  // namespace

int main(int argc, char** argv) try {
    if (argc != 2) {
        std::cerr << "usage: event_loop MODEL < events\n";
        return 2;
    }
    Worker worker{GestureRecognizer(loadModel(argv[1]))};
    Lines lines(STDIN_FILENO);
    Points stroke;
    int waiting = 0;
    bool open = true;
    while (open || waiting > 0) {
        // Closed input is always ready: it is no longer asked.
        std::array<pollfd, 2> sources{
            {{worker.answersReady(), POLLIN, 0}, {open ? STDIN_FILENO : -1, POLLIN, 0}}};
        if (poll(sources.data(), sources.size(), -1) < 0) throw std::runtime_error("poll failed");
        if (sources[0].revents != 0) {
            std::cout << worker.answer() << '\n';
            --waiting;
        }
        if (sources[1].revents == 0) continue;
        open = lines.fill();
        for (std::string line; lines.next(line);) {
            std::istringstream words(line);
            std::string event;
            double x = 0.0;
            double y = 0.0;
            words >> event;
            if (event == "down") {
                stroke.clear();
            } else if (event == "move" && words >> x >> y) {
                stroke.push_back({x, y});
            } else if (event == "up") {
                worker.submit(stroke);
                ++waiting;
            }
        }
    }
} catch (const std::exception& problem) {
    std::cerr << problem.what() << '\n';
    return 1;
}
