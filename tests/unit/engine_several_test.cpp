// SPDX-License-Identifier: GPL-3.0-or-later

// Several engines in one program: each has its variables, functions, console
// and last answer; figures and the mouse are shared; and one that runs while
// another waits leaves that one as it was.

#include <gtest/gtest.h>

#include <filesystem>
#include <memory>

#include "base/interrupt.h"
#include "builtins/engine_context.h"
#include "engine/launch.h"
#include "eval/run_state.h"
#include "unit/engine_support.h"

namespace vorpen {
namespace {

using testing::TemporaryFolder;

/// An engine with a console that a test reads.
class Engine {
public:
    explicit Engine(Host& host) : calc(host, true) { listen(); }
    Engine(Host& host, const Calc& running) : calc(host, running) { listen(); }

    /// Types into the console without choosing it; what it then shows, lines
    /// parted by " | ".
    std::string type(const std::string& line) {
        shown.clear();
        calc.beginInput(line, '>');
        calc.run();
        calc.console().endLine();
        return shown;
    }

    Calc calc;
    std::string shown;

private:
    void listen() {
        calc.console().setLineListener([this](const std::string& line) {
            std::string text = terminalText(line, false);
            text.erase(0, std::min(text.find_first_not_of(' '), text.size()));
            shown += (shown.empty() ? "" : " | ") + text;
        });
    }
};

class SeveralEngines : public ::testing::Test {
protected:
    Engine& first() { return *first_; }
    Engine& second() { return *second_; }
    void deleteFirst() { first_.reset(); }
    void deleteSecond() { second_.reset(); }
    /// What happens while a script waits.
    void later(std::function<void()> event) { host.events.push_back(std::move(event)); }

    TemporaryFolder folder;
    TestHost host{folder.path()};

private:
    std::unique_ptr<Engine> first_ = std::make_unique<Engine>(host);
    std::unique_ptr<Engine> second_ = std::make_unique<Engine>(host, first_->calc);
};

TEST_F(SeveralEngines, EachHasItsOwnVariablesAndFunctions) {
    first().type("x=1; f(t):=t+1");
    second().type("x=2; f(t):=t+20");
    EXPECT_EQ(first().type("f(x)"), "2");
    EXPECT_EQ(second().type("f(x)"), "22");
    second().type("clear x");
    EXPECT_EQ(first().type("x"), "1");
}

TEST_F(SeveralEngines, EachPrintsOnItsOwnConsole) {
    first().shown.clear();
    EXPECT_EQ(second().type("5"), "5");
    EXPECT_EQ(first().shown, "");
    EXPECT_NE(first().type("nosuch+1").find("nosuch"), std::string::npos);
    EXPECT_EQ(second().shown, "5");
}

TEST_F(SeveralEngines, EachHasItsOwnLastAnswer) {
    first().type("7");
    second().type("'text'");
    EXPECT_EQ(first().type("ans+1"), "8");
    EXPECT_EQ(second().type("ans"), "text");
}

TEST_F(SeveralEngines, TheLastOneMadeIsCurrentUntilAnotherIsChosen) {
    EXPECT_EQ(Calc::current(), &second().calc);
    EXPECT_EQ(&console(), &second().calc.console());
    first().calc.makeCurrent();
    EXPECT_EQ(Calc::current(), &first().calc);
    EXPECT_EQ(&console(), &first().calc.console());
    EXPECT_EQ(engineContext().paths, &first().calc.paths());
    // What is typed elsewhere changes nothing of the choice.
    second().type("1");
    EXPECT_EQ(&console(), &first().calc.console());
}

TEST_F(SeveralEngines, ASecondaryOneHasTheDirectoriesOfTheRunningOne) {
    TemporaryFolder elsewhere;
    first().calc.paths().setCurrent(elsewhere.path());
    TestHost otherHost("/nowhere");
    Engine third(otherHost, first().calc);
    EXPECT_TRUE(third.calc.isSecondary());
    EXPECT_EQ(third.calc.paths().current(), elsewhere.path());
    std::filesystem::create_directory(folder.path() + "/resource");
    folder.write("resource/onlyhere.vrp", "function y=onlyhere(x)\n    y=x+5;\n");
    EXPECT_EQ(third.type("onlyhere(1)"), "6");
}

TEST_F(SeveralEngines, PathsAndResourcesAreTheirOwn) {
    std::filesystem::create_directory(folder.path() + "/resource");
    folder.write("resource/twice.vrp", "function y=twice(x)\n    y=2*x;\n");
    std::filesystem::create_directory(folder.path() + "/sub");
    first().type("cd sub");
    EXPECT_EQ(first().calc.paths().current(), folder.path() + "/sub");
    EXPECT_EQ(second().calc.paths().current(), folder.path());
    EXPECT_EQ(first().type("twice(4)"), "8");
    EXPECT_EQ(second().type("twice(5)"), "10");
    first().type("twice(x):=0");
    EXPECT_EQ(second().type("twice(5)"), "10");
}

TEST_F(SeveralEngines, FiguresAndTheMouseAreShared) {
    first().type("figure(3);");
    EXPECT_EQ(second().type("figure(-1)"), "3");
    first().type("setmouse(42);");
    EXPECT_EQ(second().type("getmouse(10)"), "42");
}

TEST_F(SeveralEngines, TheStoredFactorisationIsShared) {
    first().type("setLU([2,0;0,4]);");
    EXPECT_EQ(second().type("det(\"\")"), "8");
}

TEST_F(SeveralEngines, EventsGoToTheOneThatIsCurrent) {
    first().type("figure(1); axis([0,10,0,10]); onRDown(xy):=1");
    second().type("onRDown(xy):=2");
    interaction().rightPress();
    EXPECT_EQ(interaction().mouse.read(MOUSE_RESULT), 2);
    first().calc.makeCurrent();
    interaction().rightPress();
    EXPECT_EQ(interaction().mouse.read(MOUSE_RESULT), 1);
}

TEST_F(SeveralEngines, ClosingASecondaryOneLeavesThePrimaryOneAndItsFigures) {
    second().type("figure(2);");
    first().type("x=3");
    deleteSecond();
    EXPECT_EQ(Calc::current(), &first().calc);
    EXPECT_EQ(&console(), &first().calc.console());
    EXPECT_EQ(first().type("x;; figure(-1)"), "3 | 2");
    EXPECT_EQ(first().type("ans"), "2");
    EXPECT_EQ(first().calc.paths().current(), folder.path());
}

TEST_F(SeveralEngines, TheFirstMayGoBeforeTheSecond) {
    first().calc.makeCurrent();
    deleteFirst();
    EXPECT_EQ(Calc::current(), &second().calc);
    EXPECT_EQ(second().type("1+1"), "2");
    deleteSecond();
    EXPECT_EQ(Calc::current(), nullptr);
    EXPECT_EQ(engineContext().host, nullptr);
}

TEST_F(SeveralEngines, TheLastOneTakesTheFiguresAlong) {
    first().type("figure(1);");
    deleteFirst();
    EXPECT_NE(figureList().find(1), nullptr);
    deleteSecond();
    EXPECT_EQ(figureList().find(1), nullptr);
}

TEST(LifeOfEngines, ThePrimaryOneFollowsADeletedOneThatWasCurrent) {
    TemporaryFolder folder;
    TestHost host(folder.path());
    Calc early(host, true);
    Calc primary(host);
    {
        const Calc late(host, primary);
        EXPECT_EQ(Calc::current(), &late);
    }
    EXPECT_EQ(Calc::current(), &primary);
}

TEST(LifeOfEngines, ASecondaryOneNeitherLoadsNorSaves) {
    TemporaryFolder folder;
    TestHost host(folder.path());
    {
        Calc primary(host);
        primary.beginInput("x=1", '>');
        primary.run();
        {
            Engine secondary(host, primary);
            secondary.type("x=2; y=3");
            secondary.calc.saveForNextRun();
        }
        EXPECT_FALSE(std::filesystem::exists(folder.path() + "/vorpen_env.bin"));
    }
    EXPECT_TRUE(std::filesystem::exists(folder.path() + "/vorpen_env.bin"));
    Calc again(host);
    Engine secondary(host, again);
    EXPECT_NE(secondary.type("x").find("x"), std::string::npos);
    EXPECT_EQ(again.symbols().classify("x").found->doubleValue(), 1);
    EXPECT_EQ(again.symbols().classify("y").found, nullptr);
}

// ---- one that runs while another waits

TEST_F(SeveralEngines, OneThatWaitsGoesOnAsItWas) {
    std::string other;
    later([&] { other = second().type("for i=1:3 { x=i; }; x;; 'second'"); });
    EXPECT_EQ(first().type("for i=1:2 { pause(1); i;; }; 9"), "1 | 2 | 9");
    EXPECT_EQ(other, "3 | second");
    EXPECT_EQ(first().type("ans"), "9");
    EXPECT_EQ(second().type("ans"), "second");
}

TEST_F(SeveralEngines, AReturnInTheOtherDoesNotEndTheOneThatWaits) {
    second().type("function y=g(x)\n");
    later([&] { second().type("for i=1:5 { if i==2: break; z=i; }; z"); });
    EXPECT_EQ(first().type("s=0; for i=1:3 { pause(1); s=s+i; }; s"), "6");
    EXPECT_EQ(second().shown, "1");
}

TEST_F(SeveralEngines, AFailureInTheOtherIsShownThere) {
    later([&] { second().type("nosuch+1"); });
    EXPECT_EQ(first().type("pause(1); 4"), "4");
    EXPECT_NE(second().shown.find("nosuch"), std::string::npos);
}

TEST_F(SeveralEngines, OneThatIsChosenWhileAnotherRunsFollowsIt) {
    later([&] { second().calc.makeCurrent(); });
    first().calc.makeCurrent();
    second().shown.clear();
    EXPECT_EQ(first().type("pause(1); 4"), "4");
    EXPECT_EQ(second().shown, "");
    EXPECT_EQ(Calc::current(), &second().calc);
}

TEST_F(SeveralEngines, OneThatIsMadeWhileAnotherRunsFollowsIt) {
    std::unique_ptr<Calc> third;
    later([&] { third = launchSecondary(host, first().calc, {}); });
    EXPECT_EQ(first().type("pause(1); 4"), "4");
    EXPECT_EQ(Calc::current(), third.get());
}

TEST_F(SeveralEngines, OneThatIsDeletedWhileAnotherRunsIsGone) {
    later([&] { deleteSecond(); });
    EXPECT_EQ(first().type("pause(1); 4"), "4");
    EXPECT_EQ(Calc::current(), &first().calc);
}

TEST_F(SeveralEngines, ARunningOneRefusesFurtherInput) {
    later([&] {
        EXPECT_TRUE(first().calc.isRunning());
        first().calc.beginInput("clear x", '>');
        EXPECT_FALSE(first().calc.run());
    });
    EXPECT_EQ(first().type("x=1; pause(1); x"), "wait for the end of the former input | 1");
    EXPECT_FALSE(first().calc.isRunning());
    EXPECT_EQ(first().type("x"), "1");
}

TEST_F(SeveralEngines, AnInterruptDuringTheOtherEndsBoth) {
    later([&] {
        later([] { runState().interrupt(); });
        second().type("pause(1); 1");
    });
    const std::string shown = first().type("pause(1); while 1 { x=1; }");
    forgetInterrupt();
    EXPECT_NE(shown.find("interrupted"), std::string::npos) << shown;
    EXPECT_NE(second().shown.find("interrupted"), std::string::npos) << second().shown;
}

// ---- setting up

TEST(Launching, TellsWhatWentWrong) {
    TemporaryFolder folder;
    TestHost host(folder.path());
    const OpenConsole cannotOpen = [](Calc&) { return false; };
    EXPECT_EQ(launchPrimary(host, cannotOpen), nullptr);
    EXPECT_EQ(host.boxes.back(), (TestHost::Box{"info", "PrimaryVorpen: calc failed at setup"}));
    EXPECT_EQ(Calc::current(), nullptr);

    const auto primary = launchPrimary(host, [](Calc& calc) { return !calc.isSecondary(); });
    ASSERT_NE(primary, nullptr);
    EXPECT_EQ(launchSecondary(host, *primary, cannotOpen), nullptr);
    EXPECT_EQ(host.boxes.back(), (TestHost::Box{"info", "launch of secondary Vorpen failed"}));
    EXPECT_EQ(launchSecondary(host, *primary, [](Calc&) -> bool { throw std::bad_alloc(); }), nullptr);
    EXPECT_EQ(host.boxes.size(), 3u);
    EXPECT_EQ(Calc::current(), primary.get());
}

}  // namespace
}  // namespace vorpen
