// A list, in order of arrival, of objects that carry their own link (a member `next`): a caller enters a
// node of its own stack, which needs no memory. The owner of a chain guards it with a mutex.
#ifndef VOBIUTILS_LOCALDB_CHAIN_H
#define VOBIUTILS_LOCALDB_CHAIN_H

namespace vobiutils {

template <typename Node>
struct Chain {
    Node* first = nullptr;

    void append(Node* node) {
        Node** end = &first;
        while (*end != nullptr) {
            end = &(*end)->next;
        }
        *end = node;
    }

    void remove(Node* node) {
        Node** link = &first;
        while (*link != node) {
            link = &(*link)->next;
        }
        *link = node->next;
    }
};

}  // namespace vobiutils

#endif
