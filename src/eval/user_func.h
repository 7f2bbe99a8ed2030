// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// A user function is compiled once and keeps its parameters and locals as
// ordinary values for ever, so that the compiled body points straight at them.
// A call makes no new scope: it moves the arguments into those values and runs
// the body. Only a call of a function that is already in progress saves the
// present contents, as a frame on a stack inside the function, and puts them
// back afterwards; what moves is pointers and single numbers, never arrays.
//
// A quick function, one whose body is a single `return`, skips the statement
// and the stop of the run: its expression is evaluated in place of the call, and
// a number goes in and comes out in registers.
//
// The object of a name stays where it is when the function is defined anew, and
// a call asks it for the definition that is in force when it runs. `version`
// counts the signatures, so that a call knows by one comparison whether it was
// compiled for the present one. A function is found in compiled trees like a
// variable, by a value that stands for it: `token`.

#include <cstdint>
#include <map>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "base/interrupt.h"
#include "eval/function_elements.h"
#include "eval/number_function.h"
#include "eval/return_statement.h"
#include "eval/stack_room.h"
#include "eval/statement.h"
#include "eval/store.h"

namespace vorpen {

/// Bits of FunctionDesc::flags.
enum FunctionFlag : unsigned {
    FUNCTION_QUICK_ELIGIBLE = 1u << 1,  ///< the head allows a quick call
    FUNCTION_QUICK = 1u << 2,           ///< and the body is a lone return
    FUNCTION_RESOURCE = 1u << 4,        ///< read from the resource folder
    FUNCTION_VECTORISED = 1u << 5,      ///< `::=`, runs once for each element of its last argument
    FUNCTION_DECLARED_ONLY = 1u << 6,   ///< `funcdec`, no body yet
};

/// The head of a definition. Kinds of parameters and outputs are DOUBLE_VAL,
/// COMPLEX_VAL or LIST_VAL.
struct FunctionDesc {
    std::string name;
    std::vector<std::string> paramNames;
    std::vector<std::string> outputNames = {""};  ///< one without a name when none is given
    std::vector<int> paramKinds;
    std::vector<int> outputKinds = {DOUBLE_VAL};
    std::uint32_t byReference = 0;  ///< bit i: parameter i is marked "^"
    std::vector<double> defaults;   ///< of the last parameters
    unsigned flags = 0;

    [[nodiscard]] int parameterCount() const { return static_cast<int>(paramNames.size()); }
    [[nodiscard]] int minArguments() const { return parameterCount() - static_cast<int>(defaults.size()); }
    [[nodiscard]] bool has(FunctionFlag flag) const { return (flags & flag) != 0; }
};

/// Equal kinds of parameters and outputs, marks and defaults; a default that is
/// no number equals nothing.
[[nodiscard]] bool sameSignature(const FunctionDesc& a, const FunctionDesc& b);

/// Where a definition was read.
struct FunctionSource {
    std::string text;  ///< the file, or the body's source when it was typed
    int line = 0;
    int commentStartLine = -1;
    bool typed = true;
};

/// The contents of one local while a further call of its function runs. What
/// needs a block of its own lies on a stack beside.
struct SavedLocal {
    enum State : unsigned char { empty, single, block };
    double number;  ///< of a single double
    int nrow, mark;
    State state;
};

/// The most calls of one function that may be in progress: a recursion that
/// does not end is caught before its chain of calls fills the console.
inline constexpr int maxCallsInProgress = 50;

/// The most arguments of a call that goes without records; nearly all calls
/// have fewer, and each costs room on the stack.
inline constexpr std::size_t maxPlainArguments = 4;

/// The most locals, parameters included, of a function whose calls on numbers
/// keep the frame on the machine's stack.
inline constexpr std::size_t maxNumberLocals = 6;

class UserFunc {
public:
    explicit UserFunc(std::string name) { desc_.name = std::move(name); }
    ~UserFunc();
    UserFunc(const UserFunc&) = delete;
    UserFunc& operator=(const UserFunc&) = delete;

    [[nodiscard]] const FunctionDesc& desc() const { return desc_; }
    [[nodiscard]] const std::string& name() const { return desc_.name; }
    [[nodiscard]] const FunctionSource& source() const { return source_; }
    void setSource(FunctionSource source) { source_ = std::move(source); }
    [[nodiscard]] int parameterCount() const { return desc_.parameterCount(); }
    [[nodiscard]] int minArguments() const { return desc_.minArguments(); }
    [[nodiscard]] int outputCount() const { return static_cast<int>(desc_.outputNames.size()); }
    /// The static type of a call: the kind of the first output.
    [[nodiscard]] int outputType() const { return desc_.outputKinds.front(); }

    [[nodiscard]] bool hasBody() const { return body_ != nullptr; }
    [[nodiscard]] bool isQuick() const { return quickBody_ != nullptr; }
    /// True for a function that is read from a file and has yet to be
    /// compiled.
    [[nodiscard]] bool isPending() const {
        return !body_ && lostBody_.empty() && !source_.typed && !desc_.has(FUNCTION_DECLARED_ONLY);
    }
    /// Calls that have begun and not ended.
    [[nodiscard]] int depth() const { return depth_; }
    /// Changes with the signature.
    [[nodiscard]] unsigned version() const { return version_; }
    /// Stands for this function in `uses`.
    [[nodiscard]] const Value* token() const { return &token_; }
    /// True if the body reads the variable, or calls the function whose token
    /// it is.
    [[nodiscard]] bool uses(const Value* v) const { return body_ && body_->uses(v); }

    // While the definition is compiled.

    /// Takes a new head and forgets everything of the former definition;
    /// no call may be in progress. Parameters exist afterwards.
    void resetFunction(FunctionDesc desc);
    void setFlag(FunctionFlag flag, bool on) { desc_.flags = on ? desc_.flags | flag : desc_.flags & ~flag; }

    struct Local {
        std::string name;
        std::unique_ptr<Value> value;
    };
    /// Parameters, then persistent locals, then the others.
    [[nodiscard]] std::span<const Local> locals() const { return locals_; }
    [[nodiscard]] int persistentCount() const { return persistentCount_; }
    /// The outputs behind the first.
    [[nodiscard]] std::span<Value* const> otherOutputs() const { return otherOutputs_; }
    /// Makes a local; it becomes an output when the name is that of one.
    Value* addLocal(std::string_view name, int type);
    /// Makes a persistent local with its first value; null when another local
    /// that is no parameter came before it.
    Value* addPersistent(std::string_view name, double value);
    /// The value that `return` stores to, made when there is none yet.
    Value& returnTarget();
    /// A `return` stands in the body that stores nothing.
    void noteBareReturn() { hasBareReturn_ = true; }
    /// Takes the body, infers the output and looks for outputs that nothing
    /// sets. Fails with a SyntaxError.
    void finishFunction(StatementPtr body);
    /// Drops the body; the next use fails with the message.
    void loseBody(std::string message);

    // At run time.

    /// One call with evaluated arguments. Extra outputs are stored in order;
    /// they and `out` may be variables of this function. A failure prints the
    /// line of the chain of calls on its way.
    void call(std::span<FuncArgument> arguments, ExtraOutputs extraOutputs, Value& out);

    /// One call of a function that isPlain(), with at most maxPlainArguments
    /// arguments. A value among them is a double of the caller's that is used
    /// up. The workspace is a double.
    Outcome callPlain(std::span<const Outcome> arguments, Value* workspace);

    /// The same for arguments that are all numbers: the fastest way. The
    /// locals of the call around it wait on the machine's stack, unless one of
    /// them is an array.
    Outcome callOnNumbers(std::span<const Outcome> arguments, Value* workspace);

    /// The same by the expression of a quick function alone. A value in one of
    /// the rooms is used up, any other is only read. Arguments that the
    /// function does not have are ignored.
    struct QuickArguments {
        Outcome first = Outcome::scalar(0);
        Outcome second = Outcome::scalar(0);
        DoubleValue* firstRoom = nullptr;
        DoubleValue* secondRoom = nullptr;
        bool ownsWorkspace = false;  ///< nobody reads the workspace, so its block is used again
    };
    Outcome callQuick(const QuickArguments& arguments, Value* workspace);

    /// The same with numbers alone. The room is for the result.
    Outcome callQuickOnNumbers(Outcome first, Outcome second, DoubleValue& room, Value* workspace);

    /// The form for numbers while it is worth a call, or null.
    [[nodiscard]] const NumberFunction* numberFunction() const { return usedNumberFunction_; }
    [[nodiscard]] bool hasNumberFunction() const { return numberFunction_ || makesNumberFunction_; }
    /// One call of that form, which answers as a node of the lane does. A
    /// function that again and again asks for more than numbers is not tried
    /// for ever.
    double callNumberFunction(const NumberFunction& function, double* frame) {
        if (!mayBegin()) [[unlikely]]
            return NotKnown::note();
        ++depth_;
        const double result = function.run(frame);
        if (--depth_ == 0) noteNumberAnswer();
        return result;
    }

    /// True when all parameters and the first output are doubles, and passed
    /// by value.
    [[nodiscard]] bool isPlain() const { return plain_; }

    /// Fails for an argument of a kind that no parameter of a plain function
    /// takes, as the call would.
    [[noreturn]] void failAtArgument() const;

    /// Fails with a RuntimeError unless so many arguments of these static
    /// types can be bound.
    void checkArguments(std::span<const int> types) const;

private:
    class References;
    class Results;
    class NumberFrame;

    /// A local that a frame saves: any but the persistent ones.
    struct Framed {
        Value* value;
        DoubleValue* number;  ///< the same when it is a double, else null
        bool isParameter;
    };

    void noteNumberAnswer() {
        if (!NotKnown::isNoted())
            numberCredit_ += numberCredit_ < initialCredit;
        else if (--numberCredit_ == 0)
            usedNumberFunction_ = nullptr;
    }
    void inferOutput();
    [[nodiscard]] bool alwaysReturnsValue() const;
    void describeCalls();

    [[noreturn]] void failWithoutBody() const;
    [[nodiscard]] bool ownsFramed(const Value* v) const;
    [[nodiscard]] DoubleValue& parameter(std::size_t i) { return asDouble(*locals_[i].value); }
    /// A call may begin when there is room for it and nobody wants the run to end.
    void requireRoom() const {
        if (!mayBegin()) [[unlikely]]
            attendAndRequireRoom();
    }
    [[nodiscard]] bool hasRoom() const {
        return static_cast<unsigned>(depth_) < maxCallsInProgress && stackHasRoom();
    }
    [[nodiscard]] bool mayBegin() const { return hasRoom() && !isAttentionWanted(); }
    void attendAndRequireRoom() const;
    void begin();
    void end() noexcept;
    void pushFrame();
    void popFrame() noexcept;
    void releaseLocals() noexcept;
    void unwind();
    void printInChain() const;
    void bindAll(std::span<FuncArgument> arguments, References& references);
    void bindDefaults(std::size_t bound);
    void runBody();
    SavedData takeOutput();
    void endOnNumbers(bool again, const NumberFrame& frame) noexcept;
    [[gnu::noinline]] Outcome finishWithArray(bool again, const NumberFrame& frame, Value* workspace);
    Outcome callForEach(std::span<const Outcome> arguments, Value* workspace);
    Outcome callQuickAgain(QuickArguments arguments, Value* workspace);
    Outcome evaluateQuick(const QuickArguments& arguments, Value* workspace);
    Outcome quickResult(const QuickArguments& arguments, Value* workspace);
    Outcome settleQuickResult(Value* value, const QuickArguments& arguments, DoubleValue& room,
                              Value* workspace);
    void leaveAfterFailure();
    Outcome quickForEach(Value* workspace);
    void setInput(DoubleValue& input, Outcome argument, const DoubleValue* room);
    void releaseInputs() noexcept;
    [[nodiscard]] static bool hasLargeInput(const QuickArguments& arguments);

    FunctionDesc desc_;
    FunctionSource source_;
    std::vector<Local> locals_;
    int persistentCount_ = 0;
    int depth_ = 0;
    unsigned version_ = 0;
    bool plain_ = false;
    bool quickBodyIsPure_ = false;
    int quickBodyType_ = DOUBLE_VAL;
    DoubleValue* inputs_[2] = {};  ///< the parameters of a quick function
    bool hasBareReturn_ = false;
    bool outputIsMovable_ = true;  ///< nobody but the caller will read what a call has left in it
    bool enteredAgain_ = false;    ///< a failure came out of a quick call below another one
    StatementPtr body_;
    RunnableBody bodyRun_;
    bool isOnNumbers_ = false;  ///< it has a body, is plain, and all its few locals are doubles
    Evaluatable* quickBody_ = nullptr;   ///< the expression of a quick function
    Evaluatable* numberBody_ = nullptr;  ///< the same where a call with numbers needs no further look
    std::unique_ptr<NumberFunction> numberFunction_;
    bool makesNumberFunction_ = false;
    static constexpr int initialCredit = 64;
    int numberCredit_ = initialCredit;
    const NumberFunction* usedNumberFunction_ = nullptr;
    Value* output_ = nullptr;
    std::unique_ptr<Value> inferredOutput_;
    std::vector<Value*> otherOutputs_;  ///< null until the body sets one
    std::vector<Framed> framed_;
    std::vector<SavedLocal> frames_;  ///< of all saved calls, one behind the other
    std::size_t frameTop_ = 0;        ///< records in use; the others wait for the next call
    std::vector<SavedData> blocks_;   ///< of the frames, the innermost last
    std::string lostBody_;
    DoubleValue token_;
};

/// A call of a user function in an expression. A call that was compiled for
/// another signature than the present one checks its arguments again.
class UserCallElement : public MultiInputOutput_Element {
public:
    [[nodiscard]] ElementKind elementKind() const override { return ElementKind::userFunction; }
    [[nodiscard]] bool uses(const Value* v) const override {
        return v == function_->token() || MultiInputOutput_Element::uses(v);
    }
    [[nodiscard]] UserFunc& function() const { return *function_; }
    void run(ExtraOutputs extraOutputs, Value& out) override;
    Value* pValue(Value* workspace) final { return valueOf(evaluate(workspace), workspace); }

    /// The argument elements, which the base owns.
    [[nodiscard]] std::span<Evaluatable* const> arguments() const { return arguments_; }
    /// The form of the function for numbers, when it fits this call now; a
    /// debugger wants to see the statements run.
    [[nodiscard]] const NumberFunction* numberFunction() const {
        return isForPresentSignature() && !runState().debugStepping ? function_->numberFunction() : nullptr;
    }
    /// True when no argument asks for more than a number.
    [[nodiscard]] bool hasPlainArguments() const { return plainArguments_; }

protected:
    UserCallElement(UserFunc& function, std::vector<EvaluatablePtr> arguments)
        : UserCallElement(function, pointersTo(arguments), std::move(arguments)) {}

    /// True when neither the function nor the arguments ask for more than
    /// doubles by value.
    [[nodiscard]] bool isPlainCall() const {
        return plainArguments_ && function_->isPlain() && function_->version() == version_;
    }
    [[nodiscard]] bool isForPresentSignature() const { return function_->version() == version_; }
    Outcome evaluateByRun(Value* workspace);
    Outcome evaluatePlain(Value* workspace);
    /// Apart, so that a call with numbers needs no room for its arguments.
    [[gnu::noinline]] Outcome evaluateWithRooms(Value* workspace);
    Outcome evaluateArgument(std::size_t i, DoubleValue& room);

    UserFunc* const function_;

private:
    UserCallElement(UserFunc& function, std::vector<Evaluatable*> pointers,
                    std::vector<EvaluatablePtr>&& arguments);
    Value* evaluateArgument(std::size_t i, Workspaces& workspaces);
    static std::vector<Evaluatable*> pointersTo(const std::vector<EvaluatablePtr>& arguments);

    std::vector<Evaluatable*> arguments_;
    std::vector<NumberSource> argumentNumbers_;
    std::vector<int> argumentTypes_;
    unsigned version_;     ///< of the signature that the call was compiled for
    bool plainArguments_;  ///< few, and all of integer, double or unknown type
};

/// Any call, with frames where they are needed.
class UserFuncElement final : public UserCallElement {
public:
    UserFuncElement(UserFunc& function, std::vector<EvaluatablePtr> arguments)
        : UserCallElement(function, std::move(arguments)) {}
    Outcome evaluate(Value* workspace) override;
};

/// A call of a function that was quick when the call was compiled. The static
/// type is double.
class QuickUserFuncElement final : public UserCallElement {
public:
    QuickUserFuncElement(UserFunc& function, std::vector<EvaluatablePtr> arguments);
    Outcome evaluate(Value* workspace) override;

private:
    Outcome evaluateWithTwo(Value* workspace);

    Evaluatable* first_ = nullptr;
    Evaluatable* second_ = nullptr;
};

/// The element that calls the function as it is known now. The count of the
/// arguments has been checked.
EvaluatablePtr makeCallElement(UserFunc& function, std::vector<EvaluatablePtr> arguments);

/// The functions by name.
class UserFunctionTable {
public:
    using Functions = std::map<std::string, std::unique_ptr<UserFunc>, std::less<>>;

    [[nodiscard]] const Functions& functions() const { return functions_; }
    [[nodiscard]] UserFunc* find(std::string_view name) const;

    /// A function by its head alone, for a name that has none.
    UserFunc& declare(FunctionDesc desc);

    /// Clears a function: those that call it lose their bodies. False when
    /// there is none. Fails with a SyntaxError while a call of it is in
    /// progress.
    bool remove(std::string_view name);
    void clear();

    /// The functions that read the variable lose their bodies. To be told
    /// before a global goes or changes its kind. Fails with a SyntaxError while
    /// a call of one of them is in progress.
    void variableCleared(const Value* variable, std::string_view name);

    /// True for an event of the mouse that comes so often that it is only sent
    /// to those who have a function for it.
    bool onMoveEnabled = false;
    bool onDragEnabled = false;
    bool onDragableEnabled = false;

    /// Frees removed functions. A tree that was compiled before may still point
    /// at them, so this is for the time between two inputs.
    void forgetRemoved() { removed_.clear(); }

private:
    void retire(std::unique_ptr<UserFunc> function);
    void loseReaders(const Value* read, const std::string& what);

    Functions functions_;
    std::vector<std::unique_ptr<UserFunc>> removed_;
};

}  // namespace vorpen
