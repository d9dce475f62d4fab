#pragma once

#include <atomic>
#include <cstddef>
#include <memory>

#include "platform/ChildLauncher.h"
#include "platform/posix/ChildMailbox.h"

namespace valdorn {

// Counts the bytes of one child's output that were handed over and are still held by somebody.
//
// Only the reading thread adds to the count; credits take from it on any thread. The one that
// brings it back to what is allowed tells the reader, so a reader that has seen an overdraft and
// stops reading is told afterwards, however the two threads interleave.
class OutputBudget : public std::enable_shared_from_this<OutputBudget> {
public:
    OutputBudget(std::shared_ptr<ChildMailbox> reader, ChildKey child);

    // Reading thread: counts the bytes until the credit is dropped. The credit keeps the budget
    // and the mailbox, nothing else.
    OutputCredit take(std::size_t bytes);

    // Reading thread: more than maxPendingOutputBytes are held, so no more is to be read.
    bool isOverdrawn() const { return pendingBytes_ > maxPendingOutputBytes; }

private:
    class Credit;
    void giveBack(std::size_t bytes);

    const std::shared_ptr<ChildMailbox> reader_;
    const ChildKey child_;
    std::atomic<std::size_t> pendingBytes_ = 0;
};

}  // namespace valdorn
