// A singly linked list of objects that contain their own link (a member `next`), in order of
// arrival. A node can be on the stack of the thread that enters it, so entering one cannot run out
// of memory. The owner of a chain guards it with a mutex.
#pragma once

#include <assert.h>

namespace vobiutils {

template <typename Node>
struct Chain {
    Node* first = nullptr;

    void append(Node* node) {
        assert(node->next == nullptr);
        Node** end = &first;
        while (*end != nullptr) {
            end = &(*end)->next;
        }
        *end = node;
    }

    void remove(Node* node) {
        Node** link = &first;
        while (*link != node) {
            assert(*link != nullptr);  // the node is in the chain
            link = &(*link)->next;
        }
        *link = node->next;
    }
};

}  // namespace vobiutils
