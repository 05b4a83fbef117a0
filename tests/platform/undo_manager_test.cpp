#include "platform/undo_manager.hpp"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace vx {
namespace {

// A value whose setter registers its inverse, as the document's encoding setter does.
struct Undoable {
    UndoManager& undo;
    int value = 0;
    void set(int next) {
        const int old = value;
        undo.registerUndo(this, [this, old] { set(old); });
        value = next;
    }
};

TEST(UndoManager, StepsUndoAndRedoThroughRegisteredInverses) {
    UndoManager undo;
    Undoable a{undo};
    a.set(1);
    a.set(2);
    EXPECT_TRUE(undo.canUndo());
    EXPECT_FALSE(undo.canRedo());
    undo.undo();
    EXPECT_EQ(a.value, 1);
    undo.undo();
    EXPECT_EQ(a.value, 0);
    EXPECT_FALSE(undo.canUndo());
    undo.redo();
    EXPECT_EQ(a.value, 1);
    undo.redo();
    EXPECT_EQ(a.value, 2);
    undo.undo();
    EXPECT_EQ(a.value, 1);
    a.set(5);  // a new step forgets what could be redone
    EXPECT_FALSE(undo.canRedo());
    undo.undo();
    undo.undo();
    EXPECT_EQ(a.value, 0);
    undo.undo();  // nothing left: no effect
    EXPECT_EQ(a.value, 0);
}

TEST(UndoManager, AGroupIsOneStepUndoneNewestFirst) {
    UndoManager undo;
    std::vector<std::string> order;
    Undoable a{undo}, b{undo};
    undo.beginUndoGrouping();
    a.set(1);
    undo.beginUndoGrouping();  // nested groups fold into the outer one
    b.set(1);
    undo.registerUndo(nullptr, [&] { order.push_back("last registered"); });
    undo.endUndoGrouping();
    a.set(2);
    undo.setActionName("Typing");
    undo.endUndoGrouping();
    undo.registerUndo(nullptr, [&] { order.push_back("separate step"); });

    undo.undo();
    EXPECT_EQ(order, std::vector<std::string>{"separate step"});
    EXPECT_EQ(undo.undoActionName(), "Typing");
    undo.undo();
    EXPECT_EQ(a.value, 0);
    EXPECT_EQ(b.value, 0);
    EXPECT_EQ(order.back(), "last registered");
    EXPECT_EQ(undo.redoActionName(), "Typing");
    undo.redo();
    EXPECT_EQ(a.value, 2);
    EXPECT_EQ(b.value, 1);
}

TEST(UndoManager, EmptyGroupsDisabledRegistrationAndTargetsLeaveNoStep) {
    UndoManager undo;
    Undoable a{undo}, b{undo};
    undo.beginUndoGrouping();
    undo.endUndoGrouping();
    EXPECT_FALSE(undo.canUndo());

    undo.disableUndoRegistration();
    a.set(9);
    undo.enableUndoRegistration();
    EXPECT_FALSE(undo.canUndo());

    a.set(1);
    b.set(1);
    undo.removeAllActionsWithTarget(&b);
    undo.undo();
    EXPECT_EQ(a.value, 9);
    EXPECT_EQ(b.value, 1);
    EXPECT_FALSE(undo.canUndo());
}

TEST(UndoManager, LevelsLimitAndChangeCounting) {
    UndoManager undo;
    int changeCount = 0;
    undo.setChangeHandler([&](UndoManager::Change change) { changeCount += change == UndoManager::Change::Undone ? -1 : 1; });
    undo.setLevelsOfUndo(2);
    Undoable a{undo};
    a.set(1);
    a.set(2);
    a.set(3);
    EXPECT_EQ(changeCount, 3);
    undo.undo();
    undo.undo();
    EXPECT_FALSE(undo.canUndo());
    EXPECT_EQ(a.value, 1);
    EXPECT_EQ(changeCount, 1);
    undo.redo();
    EXPECT_EQ(changeCount, 2);
}

TEST(UndoManager, UndoClosesAGroupLeftOpenAtTheTopLevel) {
    UndoManager undo;
    Undoable a{undo};
    undo.beginUndoGrouping();
    a.set(4);
    undo.undo();
    EXPECT_EQ(a.value, 0);
    EXPECT_EQ(undo.groupingLevel(), 0);
}

}  // namespace
}  // namespace vx
