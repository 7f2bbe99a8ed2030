// SPDX-License-Identifier: GPL-3.0-or-later

// Mouse, keys and controls in windows of figures, and the user functions that
// answer them.

#include <QtWidgets/QCheckBox>
#include <QtWidgets/QLabel>
#include <QtWidgets/QLineEdit>
#include <QtWidgets/QPushButton>
#include <QtWidgets/QRadioButton>

#include "window/figure_support.h"

namespace vorpen {
namespace {

class FigureEvents : public test::FigureSession {
protected:
    FigureEvents() {
        type("fix; plot([0,10],[0,10]); axis(0,10,0,10);");
        type("log=[]; n=0; item=0; field=0;");
    }
    /// A function of the user's that changes variables.
    void define(const std::string& head, const std::string& body) {
        ASSERT_EQ(type("function y=" + head + "; global log n item field; " + body + "; y=1; end"), "");
    }
    static QPoint at(double x, double y) {
        const Pixel p = figure().frame(0).pixel(x, y);
        return {p.x, p.y};
    }
    template <class Widget>
    Widget* control(int index = 0) {
        return canvas().findChildren<Widget*>(Qt::FindDirectChildrenOnly).at(index);
    }
};

// ---- Mouse ---------------------------------------------------------------------------------

TEST_F(FigureEvents, PressesCallTheirFunctions) {
    define("onLDown(p)", "log=[1,round(p)]");
    define("onLUp(p,j)", "log=[log,2,j]");
    press(at(5, 5));
    EXPECT_EQ(type("getmouse(\"lc\")"), "1 1");
    EXPECT_EQ(type("log"), "1 5 5");
    release(at(5, 5));
    EXPECT_EQ(type("log"), "1 5 5 2 0");
    EXPECT_EQ(type("round(getmouse(\"XY\"))"), "5 5");
    define("onLDouble(p)", "log=3");
    define("onRDown(p)", "log=[4,round(p)]");
    define("onRUp(p)", "log=[log,5]");
    mouse(QEvent::MouseButtonDblClick, at(5, 5), Qt::LeftButton, Qt::LeftButton);
    EXPECT_EQ(type("log"), "3");
    EXPECT_EQ(type("getmouse(\"D\")"), "1");
    release(at(5, 5));
    mouse(QEvent::MouseButtonPress, at(2, 3), Qt::RightButton, Qt::RightButton);
    EXPECT_EQ(type("getmouse(\"r\")"), "1");
    mouse(QEvent::MouseButtonRelease, at(2, 3), Qt::RightButton, Qt::NoButton);
    EXPECT_EQ(type("log"), "4 2 3 5");
    mouse(QEvent::MouseButtonPress, at(2, 3), Qt::MiddleButton, Qt::MiddleButton);
}

TEST_F(FigureEvents, MovesCallTheirFunctions) {
    define("onMove(p)", "log=[1,round(p)]");
    define("onDrag(p)", "log=[2,round(p)]");
    move(at(3, 7));
    EXPECT_EQ(type("log"), "1 3 7");
    press(at(3, 7));
    drag(at(4, 6));
    EXPECT_EQ(type("log"), "2 4 6");
}

TEST_F(FigureEvents, AMoveOverAnotherFigureIsItsOwn) {
    define("onMove(p)", "log=round(p)");
    type("figure(2); fix; plot([0,100],[0,100]); axis(0,100,0,100);");
    EXPECT_EQ(figureList().currentFigure(), &figure(2));
    move(at(3, 7), 1);
    EXPECT_EQ(type("log"), "3 7");
    EXPECT_EQ(figureList().currentFigure(), &figure(2));
    move(at(3, 7), 2);
    EXPECT_EQ(type("log"), "30 70");
}

TEST_F(FigureEvents, AFailingMoveIsSwitchedOff) {
    define("onMove(p)", "log=p[7]");
    move(at(3, 7));
    move(at(4, 7));
    ASSERT_EQ(host.boxes.size(), 1u);
    EXPECT_TRUE(host.boxes[0].starts_with("onMove --> ")) << host.boxes[0];
    EXPECT_TRUE(host.boxes[0].ends_with(" disabled")) << host.boxes[0];
}

TEST_F(FigureEvents, MovesDuringAMoveAreOneMore) {
    define("onMove(p)", "n=n+1; log=round(p); pause(1)");
    for (const double x : {2.0, 3.0, 4.0, 5.0})
        host.user.push_back([this, x] {
            move(at(x, 1));
            move(at(x + 0.4, 1));
        });
    move(at(1, 1));
    EXPECT_TRUE(host.boxes.empty()) << host.boxes[0];
    EXPECT_EQ(type("log"), "5 1");
    EXPECT_EQ(type("n"), "5");
}

TEST_F(FigureEvents, APressDuringItsOwnFunctionIsRefused) {
    define("onLDown(p)", "pause(1)");
    host.user.push_back([this] { press(at(2, 2)); });
    press(at(1, 1));
    EXPECT_EQ(host.boxes,
              std::vector<std::string>{"onLDown --> recursion not allowed in mouse function disabled"});
    press(at(1, 1));
    EXPECT_EQ(host.boxes.size(), 1u);
}

TEST_F(FigureEvents, AFunctionMayCloseItsFigure) {
    for (const char* name : {"onLDown", "onLUp", "onMove", "onKeyDown"}) {
        type("figure(1);");
        define(std::string(name) + "(p)", "close(1)");
        FigureWindow& shown = window(1);
        QWidget& area = canvas(shown);
        const auto send = [&](QEvent::Type kind, Qt::MouseButtons held) {
            QMouseEvent event(kind, QPointF(50, 50), area.mapToGlobal(QPointF(50, 50)), Qt::LeftButton, held,
                              Qt::NoModifier);
            QCoreApplication::sendEvent(&area, &event);
        };
        send(QEvent::MouseMove, Qt::NoButton);
        send(QEvent::MouseButtonPress, Qt::LeftButton);
        send(QEvent::MouseButtonRelease, Qt::NoButton);
        QKeyEvent pressed(QEvent::KeyPress, Qt::Key_A, Qt::NoModifier, "a");
        QCoreApplication::sendEvent(&area, &pressed);
        EXPECT_EQ(figureList().find(1), nullptr) << name;
        area.repaint();
        settle();
        type(std::string("clear ") + name);
    }
    EXPECT_TRUE(host.boxes.empty());
}

TEST_F(FigureEvents, TheUserMayCloseAFigureWhileItsFunctionWaits) {
    define("onLDown(p)", "pause(1); log=7");
    host.user.push_back([] { window(1).close(); });
    press(at(1, 1));
    settle();
    EXPECT_EQ(type("log"), "7");
    EXPECT_TRUE(figureList().figures().empty());
}

TEST_F(FigureEvents, AScriptWaitsForAClick) {
    host.user.push_back([this] { press(at(4, 2)); });
    EXPECT_EQ(type("round(getclick(1))"), "4 2");
    host.user.push_back([] { window(1).close(); });
    EXPECT_EQ(type("getclick(1)"), "in getclick: no figure open for mouse click");
}

TEST_F(FigureEvents, AScriptPollsTheMouse) {
    host.user.push_back([this] { move(at(3, 4)); });
    EXPECT_EQ(type("round(getmouse)"), "3 4");
    host.user.push_back([this] { press(at(6, 4)); });
    EXPECT_EQ(type("getmouse(\"l\")"), "1");
    host.user.push_back([this] { release(at(6, 4)); });
    EXPECT_EQ(type("getmouse(\"l\")"), "0");
}

TEST_F(FigureEvents, DraggedItemsStopAtTheBorder) {
    type("item=plot([5,5],\"ro^\"); dragable(item,[2,8,2,8]);");
    define("onDragable(p,id)", "log=[round(p),id==item]");
    const QImage before = picture();
    press(at(5, 5));
    EXPECT_EQ(type("log"), "5 5 1");
    drag(at(9.9, 0.1));
    drag(at(7, 7));
    drag(at(9.9, 0.1));
    const Plotable& item = figure().frame(0).item(ItemId::of(
        static_cast<std::int32_t>(interaction().mouse[MOUSE_ITEM])).item);
    EXPECT_EQ(item.x, 8);
    EXPECT_EQ(item.y, 2);
    EXPECT_NE(picture(), before);
    drag(at(5, 5));
    EXPECT_NEAR(item.x, 5, 0.05);
    release(at(5, 5));
    figure().frame(0).placeItem(2, 5, 5);
    EXPECT_EQ(picture(), before);
}

TEST_F(FigureEvents, TheCursorOfAFunctionLeavesNoTrace) {
    type("unfix; fplot(x^3-4x;x,[-3,3]);");
    QImage before = picture();
    move(at(1, 0));
    const QImage shown = picture();
    EXPECT_NE(shown, before);
    for (int k = 0; k < 300; ++k) move({60 + k, 200 - k / 3});
    Frame& frame = figure().frame(0);
    for (const int k : {frame.tracker.vertical, frame.tracker.horizontal, frame.tracker.marker,
                        frame.tracker.label})
        if (frame.item(k).visible) frame.drawItem(k);
    EXPECT_EQ(picture(), before);
}

// ---- Keys -----------------------------------------------------------------------------------

TEST_F(FigureEvents, KeysAreCharactersOrNumbers) {
    define("onKeyDown(p)", "log=[log,getmouse(13)]");
    key(Qt::Key_A, "a");
    key(Qt::Key_A, "A");
    key(Qt::Key_5, "5");
    key(Qt::Key_Left);
    key(Qt::Key_Return, "\r");
    key(Qt::Key_Escape, "\x1b");
    key(Qt::Key_Space, " ");
    key(Qt::Key_F1);
    key(Qt::Key_F12);
    key(Qt::Key_Delete, "\x7f");
    key(Qt::Key_Eacute, QString::fromUtf8("é"));
    key(Qt::Key_NumLock);
    key(Qt::Key_unknown);
    EXPECT_EQ(type("log"), "97 65 53 37 13 27 32 112 123 46 233");
    keyUp(Qt::Key_A);
    EXPECT_EQ(type("getkeyb"), "0");
    host.user.push_back([] { key(Qt::Key_Up); });
    EXPECT_EQ(type("getkeyb"), "38");
    canvas().clearFocus();
    keyUp(Qt::Key_Up);
    EXPECT_EQ(type("close(0); getkeyb"), "in getkeyb: no figure window is open");
}

TEST_F(FigureEvents, EachNamedKeyHasItsNumber) {
    const std::vector<std::pair<int, int>> numbers = {
        {Qt::Key_Backspace, 8}, {Qt::Key_Tab, 9},       {Qt::Key_Backtab, 9},     {Qt::Key_Clear, 12},
        {Qt::Key_Return, 13},   {Qt::Key_Enter, 13},    {Qt::Key_Shift, 16},      {Qt::Key_Control, 17},
        {Qt::Key_Pause, 19},    {Qt::Key_CapsLock, 20}, {Qt::Key_Escape, 27},     {Qt::Key_Space, 32},
        {Qt::Key_PageUp, 33},   {Qt::Key_PageDown, 34}, {Qt::Key_End, 35},        {Qt::Key_Home, 36},
        {Qt::Key_Left, 37},     {Qt::Key_Up, 38},       {Qt::Key_Right, 39},      {Qt::Key_Down, 40},
        {Qt::Key_Print, 44},    {Qt::Key_Insert, 45},   {Qt::Key_Delete, 46},     {Qt::Key_Meta, 91},
        {Qt::Key_Menu, 93},     {Qt::Key_NumLock, 144}, {Qt::Key_ScrollLock, 145}};
    define("onKeyDown(p)", "n=getmouse(13)");
    const auto pressed = [this](int code) {
        type("n=0;");
        key(code);
        const double held = interaction().mouse[MOUSE_KEY];
        keyUp(code);
        EXPECT_EQ(interaction().mouse[MOUSE_KEY], 0);
        return std::pair(static_cast<int>(held), std::stoi(type("n")));
    };
    for (const auto& [code, number] : numbers)
        EXPECT_EQ(pressed(code), std::pair(number, number < 65 ? number : 0)) << number;
    for (int k = 0; k < 24; ++k) EXPECT_EQ(pressed(Qt::Key_F1 + k), std::pair(112 + k, 112 + k)) << k;
    // Keys that type something, where they type nothing.
    EXPECT_EQ(pressed(Qt::Key_A), std::pair(65, 0));
    EXPECT_EQ(pressed(Qt::Key_Z), std::pair(90, 0));
    EXPECT_EQ(pressed(Qt::Key_0), std::pair(48, 48));
    EXPECT_EQ(pressed(Qt::Key_9), std::pair(57, 57));
}

// ---- Controls -------------------------------------------------------------------------------

TEST_F(FigureEvents, EachLetterIsAControlOfItsKind) {
    struct Row {
        const char* letter;
        const char* kind;
        int states;  ///< that clicks go through
        bool takesKeys;
    };
    for (const Row& row : std::vector<Row>{{"b", "QPushButton", 1, true},
                                           {"c", "QCheckBox", 2, true},
                                           {"e", "QLineEdit", 0, true},
                                           {"h", "QLabel", 0, false},
                                           {"r", "QRadioButton", 1, true},
                                           {"t", "QCheckBox", 3, true},
                                           {"B", "QPushButton", 1, true},
                                           {"C", "QCheckBox", 2, true},
                                           {"E", "QLineEdit", 0, true},
                                           {"H", "QLabel", 0, false},
                                           {"R", "QRadioButton", 1, true},
                                           {"T", "QCheckBox", 3, true}}) {
        SCOPED_TRACE(row.letter);
        type(std::string("wipe; item=createButton(\"it\",\"") + row.letter + "\",[1,1,3,1]);");
        settle();
        ASSERT_EQ(canvas().findChildren<QWidget*>(Qt::FindDirectChildrenOnly).size(), 1);
        auto* const made = control<QWidget>();
        EXPECT_TRUE(made->inherits(row.kind));
        EXPECT_TRUE(made->isVisible());
        EXPECT_EQ((made->focusPolicy() & Qt::TabFocus) != 0, row.takesKeys);
        EXPECT_EQ(made->font().pointSize(), std::string(row.kind) == "QLabel" ? 16 : 12);
        if (row.states == 0) continue;
        define("onButton(p,v)", "log=[log,v[2]]");
        type("log=[];");
        for (int k = 0; k < 6; ++k) dynamic_cast<QAbstractButton&>(*made).click();
        const char* const expected[] = {"", "0 0 0 0 0 0", "1 0 1 0 1 0", "1 2 0 1 2 0"};
        // A radio button that is alone stays on.
        EXPECT_EQ(type("log"),
                  std::string(row.kind) == "QRadioButton" ? "1 1 1 1 1 1" : expected[row.states]);
    }
    type("wipe; createButton(\"it\");");
    EXPECT_EQ(control<QPushButton>()->text(), "it") << "a push button unless it is told";
}

TEST_F(FigureEvents, AButtonStandsAtItsPlaceAndCallsTheFunction) {
    type("item=createButton(\"go\",\"b\",[2,8,2,1]);");
    auto* const button = control<QPushButton>();
    EXPECT_EQ(button->text(), "go");
    EXPECT_EQ(button->pos(), at(2, 8));
    EXPECT_EQ(button->width(), at(2, 0).x() - at(0, 0).x());
    EXPECT_EQ(button->font().pointSize(), 12);
    EXPECT_TRUE(button->font().bold());
    define("onButton(p,v)", "log=[v[1]==item,v[2]]");
    button->click();
    EXPECT_EQ(type("log"), "1 0");
    EXPECT_EQ(type("getmouse(\"c\")"), "1");
    type("text(item,\"stop\"); replot(item,\"9\");");
    EXPECT_EQ(button->text(), "stop");
    EXPECT_EQ(button->font().pointSize(), 9);
    const QPoint before = button->pos();
    window().resize(900, 600);
    settle();
    EXPECT_NE(button->pos(), before);
    EXPECT_EQ(button->pos(), at(2, 8));
}

TEST_F(FigureEvents, ChecksHaveStates) {
    define("onButton(p,v)", "log=v[2]");
    type("createButton(\"one\",\"c\",[1,1,3,1]); createButton(\"three\",\"t\",[1,2,3,1]);");
    auto* const check = control<QCheckBox>(0);
    check->click();
    EXPECT_EQ(type("log"), "1");
    check->click();
    EXPECT_EQ(type("log"), "0");
    auto* const three = control<QCheckBox>(1);
    std::string states;
    for (int k = 0; k < 4; ++k) {
        three->click();
        states += type("log");
    }
    EXPECT_EQ(states, "1201");
    check->click();
    type("replot;");
    EXPECT_TRUE(check->isChecked());
}

TEST_F(FigureEvents, OfRadioButtonsOneIsOn) {
    define("onButton(p,v)", "log=v");
    type("a=createButton(\"a\",\"r\",[1,1,3,1]); b=createButton(\"b\",\"r\",[1,2,3,1]);");
    const auto states = [] {
        std::string all;
        for (const auto& [control, id] : figure().controls)
            all += std::to_string(static_cast<int>(figure().frame(0).itemValue(id)[0]));
        return all;
    };
    control<QRadioButton>(0)->click();
    EXPECT_EQ(states(), "10");
    control<QRadioButton>(1)->click();
    EXPECT_EQ(states(), "01");
    EXPECT_EQ(type("log-b"), "0 " + type("1-b"));
}

TEST_F(FigureEvents, FieldsAndLabels) {
    type("createButton(\"name\",\"h\",[1,1,3,1]); field=createButton(\"x\",\"e\",[1,2,3,1]);");
    define("onButton(p,v)", "log=v[1]==field");
    EXPECT_EQ(control<QLabel>()->text(), "name");
    EXPECT_EQ(control<QLabel>()->font().pointSize(), 16);
    auto* const edit = control<QLineEdit>();
    EXPECT_EQ(edit->text(), "x");
    edit->setFocus();
    QKeyEvent y(QEvent::KeyPress, Qt::Key_Y, Qt::NoModifier, "y");
    QCoreApplication::sendEvent(edit, &y);
    // what has been typed stays when the figure is drawn anew
    type("replot;");
    EXPECT_EQ(edit->text(), "xy");
    QKeyEvent enter(QEvent::KeyPress, Qt::Key_Return, Qt::NoModifier, "\r");
    QCoreApplication::sendEvent(edit, &enter);
    EXPECT_EQ(type("log"), "1");
    type("text(field,\"z\");");
    EXPECT_EQ(edit->text(), "z");
}

TEST_F(FigureEvents, AControlMayEndItselfOrItsFigure) {
    type("createButton(\"go\",\"b\",[1,1,2,2]);");
    define("onButton(p,v)", "wipe");
    control<QPushButton>()->click();
    settle();
    EXPECT_TRUE(canvas().findChildren<QPushButton*>().empty());
    type("createButton(\"go\",\"b\",[0.1,0.1,0.2,0.2]);");
    define("onButton(p,v)", "close(1)");
    control<QPushButton>()->click();
    settle();
    EXPECT_TRUE(figureList().figures().empty());
    EXPECT_TRUE(host.boxes.empty());
}

TEST_F(FigureEvents, ControlsAnywhereAreHarmless) {
    type("createButton(\"far\",\"b\",[1e9,-1e9,1e9,1e9]); createButton(\"none\",\"c\",[1,1,-5,-5]);");
    type("createButton(\"nan\",\"e\",[nan,nan,nan]); createButton(\"\\a{\",\"h\",[50,50,3]);");
    settle();
    EXPECT_EQ(canvas().findChildren<QWidget*>(Qt::FindDirectChildrenOnly).size(), 4);
}

}  // namespace
}  // namespace vorpen
