// Node lists for one walk of the feature tree.
//
// A list has room for 256 node records (about 300 KB). A walk takes one for
// every node it visits and gives it back before that node's walk returns.
// The C heap returns blocks this size to the system when they are freed and
// maps them again on the next request, which costs more than reading a
// feature over a fast link; lists given back here are kept for the next node
// instead, so a walk allocates only as many as the tree is deep.
#pragma once

#include "XQCameraControl.h"

#include <memory>
#include <new>
#include <vector>

namespace collect {

class NodeListPool final {
public:
    struct GiveBack {
        NodeListPool* pool;
        void operator()(XQ_XML_NODES_LIST* list) const noexcept { pool->giveBack(list); }
    };
    using Lease = std::unique_ptr<XQ_XML_NODES_LIST, GiveBack>;

    // A list (its records not cleared), or an empty lease when memory is out.
    Lease take()
    {
        if (m_free.empty())
            return Lease(new (std::nothrow) XQ_XML_NODES_LIST, GiveBack{this});
        Lease lease(m_free.back().release(), GiveBack{this});
        m_free.pop_back();
        return lease;
    }

private:
    void giveBack(XQ_XML_NODES_LIST* list) noexcept
    {
        try {
            m_free.emplace_back(list);
        } catch (const std::bad_alloc&) {
            delete list;
        }
    }

    std::vector<std::unique_ptr<XQ_XML_NODES_LIST>> m_free;
};

} // namespace collect
