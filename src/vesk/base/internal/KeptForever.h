#ifndef VESK_BASE_INTERNAL_KEPTFOREVER_H
#define VESK_BASE_INTERNAL_KEPTFOREVER_H

#include <memory>

namespace Vesk::ML::internal {

/// Puts `object` on a list that lives as long as the process and is never freed, so that leak
/// checkers see it in use. The list never touches the object again: its owner may delete it.
/// Lock-free; std::bad_alloc leaves `object` with the caller.
void rememberForever(const void* object);

/// Hands out an object that is to stay valid for the life of the process. std::bad_alloc deletes
/// it.
template <typename T>
T* keepForever(std::unique_ptr<T> object) {
    rememberForever(object.get());
    return object.release();
}

}  // namespace Vesk::ML::internal

#endif
