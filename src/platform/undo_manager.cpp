#include "platform/undo_manager.hpp"

#include <algorithm>

#include "platform/log.hpp"

namespace vx {

void UndoManager::registerUndo(const void* target, Block inverse) {
    if (m_disabled) return;
    if (m_collecting) {
        m_collecting->actions.push_back({target, std::move(inverse)});
    } else if (m_level > 0) {
        m_open.actions.push_back({target, std::move(inverse)});
    } else {
        Group single;
        single.actions.push_back({target, std::move(inverse)});
        closeStep(std::move(single));
    }
}

void UndoManager::beginUndoGrouping() { ++m_level; }

void UndoManager::endUndoGrouping() {
    VX_ASSERT(m_level > 0);
    if (--m_level > 0 || m_collecting) return;
    Group group = std::move(m_open);
    m_open = Group{};
    if (!group.actions.empty()) closeStep(std::move(group));
}

void UndoManager::closeStep(Group group) {
    m_undoStack.push_back(std::move(group));
    m_redoStack.clear();
    trim();
    changed(Change::Done);
}

void UndoManager::replay(std::vector<Group>& from, std::vector<Group>& into, Change kind) {
    if (m_level == 1 && !m_collecting) endUndoGrouping();
    VX_ASSERT(m_level == 0 && !m_collecting);
    if (from.empty()) return;
    Group step = std::move(from.back());
    from.pop_back();
    Group reverse{step.name, {}};
    m_collecting = &reverse;
    m_collectingFor = kind;
    for (auto action = step.actions.rbegin(); action != step.actions.rend(); ++action) action->inverse();
    m_collecting = nullptr;
    if (!reverse.actions.empty()) into.push_back(std::move(reverse));
    trim();
    changed(kind);
}

void UndoManager::undo() { replay(m_undoStack, m_redoStack, Change::Undone); }

void UndoManager::redo() { replay(m_redoStack, m_undoStack, Change::Redone); }

void UndoManager::setActionName(std::string name) {
    if (m_level > 0)
        m_open.name = std::move(name);
    else if (!m_undoStack.empty())
        m_undoStack.back().name = std::move(name);
}

std::string UndoManager::undoActionName() const { return m_undoStack.empty() ? std::string() : m_undoStack.back().name; }

std::string UndoManager::redoActionName() const { return m_redoStack.empty() ? std::string() : m_redoStack.back().name; }

void UndoManager::enableUndoRegistration() {
    VX_ASSERT(m_disabled > 0);
    --m_disabled;
}

void UndoManager::removeAllActions() {
    m_undoStack.clear();
    m_redoStack.clear();
    m_open = Group{};
}

void UndoManager::removeAllActionsWithTarget(const void* target) {
    auto strip = [target](std::vector<Group>& stack) {
        for (auto& group : stack)
            std::erase_if(group.actions, [target](const Action& action) { return action.target == target; });
        std::erase_if(stack, [](const Group& group) { return group.actions.empty(); });
    };
    strip(m_undoStack);
    strip(m_redoStack);
    std::erase_if(m_open.actions, [target](const Action& action) { return action.target == target; });
}

void UndoManager::setLevelsOfUndo(size_t levels) {
    m_levels = levels;
    trim();
}

void UndoManager::trim() {
    if (m_levels == 0) return;
    for (auto* stack : {&m_undoStack, &m_redoStack})
        if (stack->size() > m_levels) stack->erase(stack->begin(), stack->end() - static_cast<ptrdiff_t>(m_levels));
}

}  // namespace vx
