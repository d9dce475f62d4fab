#include "platform/posix/OutputBudget.h"

#include <utility>

namespace valdorn {

class OutputBudget::Credit {
public:
    Credit(std::shared_ptr<OutputBudget> budget, std::size_t bytes)
        : budget_(std::move(budget)), bytes_(bytes) {}
    Credit(const Credit&) = delete;
    Credit& operator=(const Credit&) = delete;
    ~Credit() { budget_->giveBack(bytes_); }

private:
    const std::shared_ptr<OutputBudget> budget_;
    const std::size_t bytes_;
};

OutputBudget::OutputBudget(std::shared_ptr<ChildMailbox> reader, ChildKey child)
    : reader_(std::move(reader)), child_(child) {}

OutputCredit OutputBudget::take(std::size_t bytes) {
    pendingBytes_ += bytes;
    return std::make_shared<Credit>(shared_from_this(), bytes);
}

void OutputBudget::giveBack(std::size_t bytes) {
    const std::size_t before = pendingBytes_.fetch_sub(bytes);
    if (before > maxPendingOutputBytes && before - bytes <= maxPendingOutputBytes)
        reader_->lookAt(child_);
}

}  // namespace valdorn
