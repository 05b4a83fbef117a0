// UndoManager: undo and redo by registered inverses, in groups.
//
// A change registers the action that reverses it (usually a call of the same setter with the old
// value). The actions registered between beginUndoGrouping and the matching endUndoGrouping form
// one step; an action registered outside any group is a step of its own. Undoing a step runs its
// actions newest first; whatever they register in turn becomes the redo step, and redoing
// registers the undo step again the same way. A new step clears the redo stack.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "platform/dispatch.hpp"

namespace vx {

class UndoManager {
public:
    enum class Change { Done, Undone, Redone };

    UndoManager() = default;
    UndoManager(const UndoManager&) = delete;
    UndoManager& operator=(const UndoManager&) = delete;

    // `target` identifies who registered the action, for removeAllActionsWithTarget.
    void registerUndo(const void* target, Block inverse);

    void beginUndoGrouping();
    void endUndoGrouping();
    int groupingLevel() const { return m_level; }

    bool canUndo() const { return !m_undoStack.empty(); }
    bool canRedo() const { return !m_redoStack.empty(); }
    // Undoes the newest step (closing a group left open at level 1 first); nothing when there is none.
    void undo();
    void redo();
    bool isUndoing() const { return m_collecting && m_collectingFor == Change::Undone; }
    bool isRedoing() const { return m_collecting && m_collectingFor == Change::Redone; }

    // Names the step being built (or the last one closed), as shown in an "Undo <name>" menu item.
    void setActionName(std::string name);
    std::string undoActionName() const;
    std::string redoActionName() const;

    void disableUndoRegistration() { ++m_disabled; }
    void enableUndoRegistration();
    bool isUndoRegistrationEnabled() const { return m_disabled == 0; }

    void removeAllActions();
    void removeAllActionsWithTarget(const void* target);
    // Keeps at most this many undo steps (0: no limit).
    void setLevelsOfUndo(size_t levels);

    // Called after a step is closed, undone or redone (a document counts its changes with it).
    void setChangeHandler(std::function<void(Change)> handler) { m_changeHandler = std::move(handler); }

private:
    struct Action {
        const void* target;
        Block inverse;
    };
    struct Group {
        std::string name;
        std::vector<Action> actions;
    };

    void closeStep(Group group);
    void replay(std::vector<Group>& from, std::vector<Group>& into, Change kind);
    void trim();
    void changed(Change change) {
        if (m_changeHandler) m_changeHandler(change);
    }

    std::vector<Group> m_undoStack, m_redoStack;
    Group m_open;
    int m_level = 0;
    int m_disabled = 0;
    size_t m_levels = 0;
    Group* m_collecting = nullptr;  // while undoing or redoing: where registrations go
    Change m_collectingFor = Change::Done;
    std::function<void(Change)> m_changeHandler;
};

}  // namespace vx
