#include <vesk/base/internal/KeptForever.h>

#include <atomic>

namespace Vesk::ML::internal {
namespace {

struct Node {
    const void* object;
    Node* next;
};

// Constant-initialised and trivially destructible: in order before and after all other statics.
constinit std::atomic<Node*> head{nullptr};

}  // namespace

void rememberForever(const void* object) {
    Node* node = new Node{object, head.load(std::memory_order_relaxed)};
    while (!head.compare_exchange_weak(node->next, node, std::memory_order_release,
                                       std::memory_order_relaxed)) {
    }
}

}  // namespace Vesk::ML::internal
