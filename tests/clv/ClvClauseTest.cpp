#include "Quillet/clv/clause.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <memory>
#include <optional>
#include <random>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "support/Seed.h"

namespace {

using Strings = std::vector<std::string>;

Strings Words(const std::string& text) {
    std::istringstream stream(text);
    Strings words;
    for (std::string word; stream >> word;) {
        words.push_back(word);
    }
    return words;
}

// A leaf that records its evaluations.
class Probe : public clv::expr {
public:
    Probe(std::string name, std::string& asked) : m_name(std::move(name)), m_asked(asked) {}
    using clv::expr::operator=;
    bool value() const override {
        m_asked += m_name;
        return clv::expr::value();
    }

private:
    std::string m_name;
    std::string& m_asked;
};

// Appends the tokens of a text; "a" to "d" are the leaves and "null" is none.
class ClauseTest : public testing::Test {
protected:
    void Append(clv::clause& clause, const std::string& text) {
        for (const std::string& word : Words(text)) {
            if (word == "AND") {
                clause.and_();
            } else if (word == "OR") {
                clause.or_();
            } else if (word == "NOT") {
                clause.not_();
            } else if (word == "(") {
                clause.leftBracket();
            } else if (word == ")") {
                clause.rightBracket();
            } else {
                clause.expr(word == "null" ? nullptr : Leaf(word));
            }
        }
    }

    Probe* Leaf(std::string_view name) {
        return name == "a" ? &m_a : name == "b" ? &m_b : name == "c" ? &m_c : &m_d;
    }

    // Makes the named leaves true and all others false.
    void SetTrue(std::string_view names) {
        for (const std::string_view name : {"a", "b", "c", "d"}) {
            *Leaf(name) = names.find(name) != std::string_view::npos;
        }
    }

    bool Value(const std::string& text, std::string_view trueLeaves = {}) {
        clv::clause clause;
        Append(clause, text);
        SetTrue(trueLeaves);
        m_asked.clear();
        return clause.evaluate();
    }

    // The leaves that were evaluated, in order.
    std::string m_asked;
    Probe m_a{"a", m_asked};
    Probe m_b{"b", m_asked};
    Probe m_c{"c", m_asked};
    Probe m_d{"d", m_asked};
};

TEST(ClvElement, Types_HaveTheirNumbers) {
    EXPECT_EQ(clv::element::et_expr, 0);
    EXPECT_EQ(clv::element::et_opr, 1);
    EXPECT_EQ(clv::element::et_not, 2);
    EXPECT_EQ(clv::element::et_lbracket, 3);
    EXPECT_EQ(clv::element::et_rbracket, 4);
    EXPECT_EQ(sizeof(clv::element::etype), 4U);
}

TEST(ClvElement, EveryToken_HasItsTextAndType) {
    clv::expr leaf;
    clv::opr_and conjunction;
    clv::opr_or disjunction;
    clv::opr_not negation;
    clv::leftbracket left;
    clv::rightbracket right;
    Strings texts;
    std::vector<int> types;
    for (clv::element* token :
         std::vector<clv::element*>{&leaf, &conjunction, &disjunction, &negation, &left, &right}) {
        texts.emplace_back(token->string());
        types.push_back(token->type());
    }
    EXPECT_EQ(texts, (Strings{"exp", "AND", "OR", "NOT", "(", ")"}));
    EXPECT_EQ(types, (std::vector<int>{0, 1, 1, 2, 3, 4}));
}

TEST(ClvExpr, Value_IsFalseUntilItIsSet) {
    clv::expr leaf;
    EXPECT_FALSE(leaf.value());
    leaf = true;
    EXPECT_TRUE(leaf.value());
    const clv::expr copy(leaf);
    leaf = false;
    EXPECT_TRUE(copy.value());
    leaf = copy;
    EXPECT_TRUE(leaf.value());
    EXPECT_TRUE(clv::expr(true).value());
    EXPECT_FALSE(clv::expr(false).value());
}

TEST_F(ClauseTest, Operators_AskTheSecondOperandOnlyWhereTheFirstLeavesItOpen) {
    clv::opr_and conjunction;
    clv::opr_or disjunction;
    SetTrue("a");
    EXPECT_FALSE(conjunction.value(&m_a, &m_b));
    EXPECT_EQ(m_asked, "ab");
    m_asked.clear();
    EXPECT_FALSE(conjunction.value(&m_b, &m_a));
    EXPECT_EQ(m_asked, "b");
    m_asked.clear();
    EXPECT_TRUE(disjunction.value(&m_b, &m_a));
    EXPECT_EQ(m_asked, "ba");
    m_asked.clear();
    EXPECT_TRUE(disjunction.value(&m_a, &m_b));
    EXPECT_EQ(m_asked, "a");
}

TEST_F(ClauseTest, Not_IgnoresTheSecondOperand) {
    clv::opr_not negation;
    SetTrue("a");
    EXPECT_FALSE(negation.value(&m_a, nullptr));
    EXPECT_TRUE(negation.value(&m_b, &m_a));
    EXPECT_EQ(m_asked, "ab");
}

TEST_F(ClauseTest, Operators_MissingOperand_CountsAsFalse) {
    clv::opr_and conjunction;
    clv::opr_or disjunction;
    clv::opr_not negation;
    SetTrue("a");
    EXPECT_FALSE(conjunction.value(&m_a, nullptr));
    EXPECT_FALSE(conjunction.value(nullptr, &m_a));
    EXPECT_TRUE(disjunction.value(nullptr, &m_a));
    EXPECT_FALSE(disjunction.value(nullptr, nullptr));
    EXPECT_FALSE(negation.value(nullptr, nullptr));
}

TEST_F(ClauseTest, Evaluate_EmptyClause_IsTrueAndValid) {
    clv::clause clause;
    EXPECT_TRUE(clause.evaluate());
    EXPECT_TRUE(clause.IsValid());
    EXPECT_EQ(clause.GetClauseString(), "");
    EXPECT_EQ(clause.GetRPNString(), "");
}

TEST_F(ClauseTest, Evaluate_SingleLeaf_IsItsValue) {
    EXPECT_FALSE(Value("a"));
    EXPECT_TRUE(Value("a", "a"));
    EXPECT_TRUE(Value("( ( a ) )", "a"));
}

TEST_F(ClauseTest, Evaluate_Chain_GroupsFromTheRight) {
    EXPECT_FALSE(Value("a AND b OR c", "c")) << "a AND (b OR c)";
    EXPECT_TRUE(Value("a AND b OR c", "ac"));
    EXPECT_TRUE(Value("a OR b AND c", "a"));
    EXPECT_FALSE(Value("a OR b AND c", "b"));
}

TEST_F(ClauseTest, Evaluate_Not_BindsTheWholeRest) {
    EXPECT_TRUE(Value("NOT a AND b")) << "NOT (a AND b)";
    EXPECT_TRUE(Value("NOT a AND b", "a"));
    EXPECT_FALSE(Value("NOT a AND b", "ab"));
    EXPECT_TRUE(Value("a AND NOT b", "a"));
    EXPECT_TRUE(Value("NOT NOT a", "a"));
}

TEST_F(ClauseTest, Evaluate_Brackets_ChangeTheGrouping) {
    EXPECT_TRUE(Value("( a AND b ) OR c", "c"));
    EXPECT_FALSE(Value("( NOT a ) AND b"));
    EXPECT_FALSE(Value("( a OR b ) AND c", "a"));
    EXPECT_TRUE(Value("( a OR b ) AND c", "ac"));
}

TEST_F(ClauseTest, Evaluate_RightOperand_IsAskedFirst) {
    EXPECT_FALSE(Value("a AND b", "a"));
    EXPECT_EQ(m_asked, "b");
    EXPECT_TRUE(Value("a AND b", "ab"));
    EXPECT_EQ(m_asked, "ba");
    EXPECT_TRUE(Value("a OR b", "ab"));
    EXPECT_EQ(m_asked, "b");
    EXPECT_FALSE(Value("a OR b"));
    EXPECT_EQ(m_asked, "ba");
}

TEST_F(ClauseTest, Evaluate_GroupOnTheLeft_IsAskedBeforeTheRestIsKnown) {
    EXPECT_FALSE(Value("( a OR b ) AND c", "a"));
    EXPECT_EQ(m_asked, "bac");
}

TEST_F(ClauseTest, Evaluate_AgainWithOtherValues_IsTheNewValue) {
    clv::clause clause;
    Append(clause, "a AND NOT ( b OR c )");
    SetTrue("a");
    EXPECT_TRUE(clause.evaluate());
    SetTrue("ac");
    EXPECT_FALSE(clause.evaluate());
    SetTrue("a");
    EXPECT_TRUE(clause.evaluate());
}

TEST_F(ClauseTest, Evaluate_MoreOperandsThanOperatorsTake_TheLastOneCounts) {
    EXPECT_TRUE(Value("a b", "b"));
    EXPECT_FALSE(Value("a b", "a"));
    EXPECT_EQ(m_asked, "b");
    EXPECT_TRUE(Value("a b AND c", "bc"));
}

TEST_F(ClauseTest, Evaluate_OperatorWithTooFewOperands_IsFalseAndAsksNobody) {
    for (const char* text : {"AND", "OR", "NOT", "a AND", "AND a", "a OR", "NOT a AND", "( a AND ) b",
                             "a AND ( OR b )", "( NOT ) a", "a NOT AND"}) {
        EXPECT_FALSE(Value(text, "abcd")) << text;
        EXPECT_EQ(m_asked, "") << text;
    }
}

TEST_F(ClauseTest, Evaluate_BracketWithoutPartner_IsFalseAndAsksNobody) {
    for (const char* text : {"( a", "a )", ") a (", "a ) OR b (", "(", ")", "( a ) )", "( ( a )"}) {
        EXPECT_FALSE(Value(text, "abcd")) << text;
        EXPECT_EQ(m_asked, "") << text;
    }
}

TEST_F(ClauseTest, Evaluate_BracketsAroundNothing_AreNoOperand) {
    EXPECT_FALSE(Value("( )"));
    EXPECT_TRUE(Value("( ) a", "a"));
    EXPECT_FALSE(Value("a AND ( )", "a"));
}

TEST_F(ClauseTest, Evaluate_NullLeaf_IsFalse) {
    for (const char* text : {"null", "a OR null", "null OR a", "NOT null", "null a"}) {
        EXPECT_FALSE(Value(text, "a")) << text;
    }
}

TEST_F(ClauseTest, IsValid_CountsBracketsAndLooksForNull) {
    const auto isValid = [&](const char* text) {
        clv::clause clause;
        Append(clause, text);
        return clause.IsValid();
    };
    EXPECT_TRUE(isValid("a"));
    EXPECT_TRUE(isValid("( a )"));
    EXPECT_FALSE(isValid("( a"));
    EXPECT_FALSE(isValid("a )"));
    EXPECT_TRUE(isValid(") a (")) << "only the counts are compared";
    EXPECT_TRUE(isValid("a AND")) << "operands are not counted";
    EXPECT_FALSE(isValid("null"));
    EXPECT_FALSE(isValid("( a ) null"));
    EXPECT_FALSE(isValid("( null )"));
}

TEST_F(ClauseTest, GetClauseString_ShowsTheTokensAsAppended) {
    clv::clause clause;
    Append(clause, "( a AND b )");
    EXPECT_EQ(clause.GetClauseString(), "( exp AND exp )");
    Append(clause, "OR NOT c");
    EXPECT_EQ(clause.GetClauseString(), "( exp AND exp ) OR NOT exp");
}

TEST_F(ClauseTest, GetRPNString_ShowsOperatorsBehindTheirOperands) {
    const auto postfix = [&](const char* text) {
        clv::clause clause;
        Append(clause, text);
        return clause.GetRPNString();
    };
    EXPECT_EQ(postfix("a AND b OR c"), "exp exp exp OR AND");
    EXPECT_EQ(postfix("NOT a AND b"), "exp exp AND NOT");
    EXPECT_EQ(postfix("a AND NOT b"), "exp exp NOT AND");
    EXPECT_EQ(postfix("( a OR b ) AND c"), "exp exp OR exp AND");
}

TEST_F(ClauseTest, Strings_NullLeaf_IsLeftOut) {
    clv::clause clause;
    Append(clause, "null a OR null");
    EXPECT_EQ(clause.GetClauseString(), "exp OR");
    EXPECT_EQ(clause.GetRPNString(), "exp OR");
}

TEST_F(ClauseTest, GetRPNString_AskedTwice_BuildsOnce) {
    clv::clause clause;
    Append(clause, "a OR b");
    EXPECT_EQ(clause.GetRPNString(), "exp exp OR");
    EXPECT_EQ(clause.GetRPNString(), "exp exp OR");
    SetTrue("a");
    EXPECT_TRUE(clause.evaluate());
    EXPECT_EQ(clause.GetRPNString(), "exp exp OR");
}

TEST_F(ClauseTest, Clear_EmptiesTheClause) {
    clv::clause clause;
    Append(clause, "a");
    clause.clear();
    EXPECT_EQ(clause.GetClauseString(), "");
    EXPECT_TRUE(clause.evaluate());
    EXPECT_EQ(m_asked, "");
}

TEST_F(ClauseTest, Clear_BeforeTheFirstEvaluation_LeavesNothingInFront) {
    clv::clause clause;
    Append(clause, "a AND b");
    clause.clear();
    Append(clause, "c");
    EXPECT_EQ(clause.GetRPNString(), "exp");
}

TEST_F(ClauseTest, Refill_AfterAnEvaluation_KeepsTheOldTokensInFront) {
    clv::clause clause;
    Append(clause, "a OR b");
    clause.evaluate();
    clause.clear();
    EXPECT_EQ(clause.GetRPNString(), "exp exp OR");
    Append(clause, "NOT c");
    EXPECT_EQ(clause.GetClauseString(), "NOT exp");
    EXPECT_EQ(clause.GetRPNString(), "exp exp OR exp NOT");
    SetTrue("ab");
    EXPECT_TRUE(clause.evaluate()) << "the new tokens decide";
    SetTrue("abc");
    EXPECT_FALSE(clause.evaluate());
}

TEST_F(ClauseTest, Refill_OperatorWithoutOperand_TakesTheOldResult) {
    clv::clause clause;
    Append(clause, "a");
    clause.evaluate();
    clause.clear();
    Append(clause, "NOT");
    SetTrue("a");
    EXPECT_FALSE(clause.evaluate());
    SetTrue("");
    EXPECT_TRUE(clause.evaluate());
}

TEST_F(ClauseTest, Append_AfterAnEvaluation_BuildsTheWholeClauseBehindTheOldOne) {
    clv::clause clause;
    Append(clause, "a");
    clause.evaluate();
    Append(clause, "AND b");
    EXPECT_EQ(clause.GetRPNString(), "exp exp exp AND");
    SetTrue("ab");
    EXPECT_TRUE(clause.evaluate());
    SetTrue("a");
    EXPECT_FALSE(clause.evaluate());
}

TEST_F(ClauseTest, Copy_OutlivesTheOriginal) {
    auto original = std::make_unique<clv::clause>();
    Append(*original, "( a OR b ) AND NOT c");
    const clv::clause unevaluated(*original);
    original->evaluate();
    clv::clause evaluated(*original);
    clv::clause assigned;
    Append(assigned, "d");
    assigned = unevaluated;
    original.reset();
    SetTrue("b");
    EXPECT_TRUE(evaluated.evaluate());
    EXPECT_TRUE(assigned.evaluate());
    SetTrue("bc");
    EXPECT_FALSE(evaluated.evaluate());
    EXPECT_FALSE(assigned.evaluate());
    EXPECT_TRUE(evaluated.IsValid());
    EXPECT_EQ(evaluated.GetClauseString(), "( exp OR exp ) AND NOT exp");
    EXPECT_EQ(evaluated.GetRPNString(), "exp exp OR exp NOT AND");
    EXPECT_EQ(assigned.GetRPNString(), "exp exp OR exp NOT AND");
}

TEST_F(ClauseTest, Copy_ChangesApartFromTheOriginal) {
    clv::clause original;
    Append(original, "a");
    clv::clause copy(original);
    Append(copy, "AND b");
    EXPECT_EQ(original.GetClauseString(), "exp");
    EXPECT_EQ(copy.GetClauseString(), "exp AND exp");
    SetTrue("a");
    EXPECT_TRUE(original.evaluate());
    EXPECT_FALSE(copy.evaluate());
}

TEST_F(ClauseTest, Assign_OverAnEvaluatedClause_UsesTheNewCondition) {
    clv::clause target;
    Append(target, "a AND b");
    SetTrue("ab");
    EXPECT_TRUE(target.evaluate());
    clv::clause fresh;
    Append(fresh, "NOT ( c OR d )");
    target = fresh;
    m_asked.clear();
    EXPECT_TRUE(target.evaluate());
    EXPECT_EQ(m_asked, "dc");
    SetTrue("abc");
    EXPECT_FALSE(target.evaluate());
    EXPECT_EQ(target.GetRPNString(), "exp exp OR NOT");
    EXPECT_EQ(target.GetClauseString(), "NOT ( exp OR exp )");
}

TEST_F(ClauseTest, Assign_AnEvaluatedClauseOverAnEvaluatedOne_UsesTheNewCondition) {
    clv::clause target;
    Append(target, "a");
    clv::clause other;
    Append(other, "NOT b");
    SetTrue("a");
    EXPECT_TRUE(target.evaluate());
    EXPECT_TRUE(other.evaluate());
    target = other;
    SetTrue("ab");
    EXPECT_FALSE(target.evaluate());
    EXPECT_EQ(target.GetRPNString(), "exp NOT");
    target = clv::clause();
    EXPECT_TRUE(target.evaluate()) << "an empty clause is true";
    EXPECT_EQ(target.GetRPNString(), "");
}

TEST_F(ClauseTest, Assign_Itself_StaysAsItIs) {
    clv::clause clause;
    Append(clause, "a OR b");
    const clv::clause& same = clause;
    clause = same;
    SetTrue("a");
    EXPECT_TRUE(clause.evaluate());
    EXPECT_EQ(clause.GetRPNString(), "exp exp OR");
}

TEST_F(ClauseTest, Copy_LeavesThatAreGone_AreNotLookedAt) {
    clv::clause original;
    {
        clv::expr leaf;
        original.expr(&leaf);
        original.evaluate();
    }
    clv::clause copy(original);
    copy.clear();
    EXPECT_TRUE(copy.evaluate());
}

class opr_xor : public clv::opr {
public:
    const char* string() override { return "XOR"; }
    bool value(const clv::expr* a, const clv::expr* b) override {
        m_operands.push_back(a);
        m_operands.push_back(b);
        return a->value() != b->value();
    }

    std::vector<const clv::expr*> m_operands;
};

// A clause with an operator of its own.
class WiderClause : public clv::clause {
public:
    explicit WiderClause(clv::element& token) : m_token(token) {}
    void OwnToken() { append(&m_token); }
    bool Build() { return BuildRPN(); }

private:
    clv::element& m_token;
};

TEST_F(ClauseTest, OperatorOfADerivedClass_GetsTheRightOperandFirst) {
    opr_xor token;
    WiderClause clause(token);
    clause.expr(&m_a);
    clause.OwnToken();
    clause.expr(&m_b);
    EXPECT_EQ(clause.GetRPNString(), "exp exp XOR");
    SetTrue("b");
    EXPECT_TRUE(clause.evaluate());
    SetTrue("ab");
    EXPECT_FALSE(clause.evaluate());
    EXPECT_EQ(m_asked, "baba");
    EXPECT_EQ(token.m_operands, (std::vector<const clv::expr*>{&m_b, &m_a, &m_b, &m_a}))
        << "the leaves themselves";
}

TEST_F(ClauseTest, OperatorOfADerivedClass_IsSharedByCopies) {
    opr_xor token;
    auto original = std::make_unique<WiderClause>(token);
    original->expr(&m_a);
    original->OwnToken();
    original->expr(&m_b);
    clv::clause copy(*original);
    original.reset();
    SetTrue("a");
    EXPECT_TRUE(copy.evaluate());
    EXPECT_EQ(token.m_operands.size(), 2U);
}

TEST_F(ClauseTest, UnaryOperatorOfADerivedClass_GetsNoSecondOperand) {
    struct opr_same : opr_xor {
        etype type() override { return et_not; }
        bool value(const clv::expr* a, const clv::expr* b) override { return b == nullptr && a->value(); }
    } token;
    WiderClause clause(token);
    clause.OwnToken();
    clause.expr(&m_a);
    SetTrue("a");
    EXPECT_TRUE(clause.evaluate());
}

TEST_F(ClauseTest, BuildRPN_AppendsAndIsTrue) {
    opr_xor token;
    WiderClause clause(token);
    Append(clause, "a");
    EXPECT_TRUE(clause.Build());
    EXPECT_EQ(clause.GetRPNString(), "exp exp") << "the clause itself did not know of it";
}

TEST_F(ClauseTest, TokenThatIsNotWhatItSays_MakesTheClauseFalse) {
    struct : clv::expr {
        etype type() override { return et_opr; }
    } pretender;
    clv::clause clause;
    Append(clause, "a");
    clause.expr(&pretender);
    Append(clause, "b");
    SetTrue("ab");
    EXPECT_FALSE(clause.evaluate());
}

TEST_F(ClauseTest, TokenOfAnUnknownType_IsPassedOver) {
    struct : clv::expr {
        etype type() override { return static_cast<etype>(5); }
    } stranger;
    clv::clause clause;
    clause.expr(&stranger);
    Append(clause, "a");
    SetTrue("a");
    EXPECT_TRUE(clause.evaluate());
    EXPECT_EQ(clause.GetClauseString(), "exp exp");
    EXPECT_EQ(clause.GetRPNString(), "exp");
}

// The rules, step by step, over the words of a clause.
class Reference {
public:
    explicit Reference(const Strings& infix) {
        Strings stack;
        const auto pop = [&] {
            m_postfix.push_back(stack.back());
            stack.pop_back();
        };
        for (const std::string& word : infix) {
            if (word == "AND" || word == "OR" || word == "NOT" || word == "(") {
                stack.push_back(word);
            } else if (word != ")") {
                m_postfix.push_back(word);
            } else {
                while (!stack.empty() && stack.back() != "(") {
                    pop();
                }
                if (stack.empty()) {
                    m_postfix.push_back(word);
                } else {
                    stack.pop_back();
                }
            }
        }
        while (!stack.empty()) {
            pop();
        }
    }

    std::string Postfix() const {
        std::string text;
        for (const std::string& word : m_postfix) {
            if (word != "null") {
                const bool isLeaf = word >= "a" && word <= "d";
                text += (text.empty() ? "" : " ") + (isLeaf ? "exp" : word);
            }
        }
        return text;
    }

    // Nothing if the clause is malformed.
    std::optional<bool> Value(const std::string& trueLeaves, std::string& asked) const {
        const auto ask = [&](const std::string& operand) {
            if (operand == "true" || operand == "false") {
                return operand == "true";
            }
            asked += operand;
            return trueLeaves.find(operand) != std::string::npos;
        };
        Strings stack;
        for (const std::string& word : m_postfix) {
            if (word == "(" || word == ")" || word == "null") {
                return std::nullopt;
            }
            if (word != "AND" && word != "OR" && word != "NOT") {
                stack.push_back(word);
                continue;
            }
            if (stack.size() < (word == "NOT" ? 1U : 2U)) {
                return std::nullopt;
            }
            const std::string right = stack.back();
            stack.pop_back();
            bool result = ask(right);
            if (word == "NOT") {
                result = !result;
            } else {
                const std::string left = stack.back();
                stack.pop_back();
                if (result == (word == "AND")) {
                    result = ask(left);
                }
            }
            stack.emplace_back(result ? "true" : "false");
        }
        return stack.empty() ? std::nullopt : std::optional<bool>(ask(stack.back()));
    }

private:
    Strings m_postfix;
};

// A valid condition.
std::string WellFormed(std::mt19937& random, int depth) {
    const std::string leaf(1, "abcd"[random() % 4]);
    if (depth == 0) {
        return leaf;
    }
    switch (random() % 4) {
        case 0:
            return "NOT " + WellFormed(random, depth - 1);
        case 1:
            return "( " + WellFormed(random, depth - 1) + " )";
        case 2:
            return WellFormed(random, depth - 1) + (random() % 2 == 0 ? " AND " : " OR ") +
                   WellFormed(random, depth - 1);
        default:
            return leaf;
    }
}

std::string AnyTokens(std::mt19937& random) {
    static const char* const Tokens[] = {"a", "b", "c", "d", "AND", "OR", "AND", "OR", "NOT", "(", ")"};
    std::string text;
    for (unsigned long left = random() % 12; left > 0; --left) {
        text += random() % 40 == 0 ? "null" : Tokens[random() % std::size(Tokens)];
        text += ' ';
    }
    return text;
}

TEST_F(ClauseTest, Evaluate_RandomClauses_MatchTheRulesTakenStepByStep) {
    std::mt19937 random(quillet::test::Seed(20250301));
    std::size_t malformed = 0;
    constexpr int Rounds = 20000;
    for (int round = 0; round < Rounds; ++round) {
        const std::string text = round % 2 == 0 ? WellFormed(random, 5) : AnyTokens(random);
        const Reference reference(Words(text));
        clv::clause clause;
        Append(clause, text);
        EXPECT_EQ(clause.GetRPNString(), reference.Postfix()) << text;
        for (int repeat = 0; repeat < 3; ++repeat) {
            std::string trueLeaves;
            for (const char name : {'a', 'b', 'c', 'd'}) {
                trueLeaves += random() % 2 == 0 ? std::string(1, name) : "";
            }
            SetTrue(trueLeaves);
            m_asked.clear();
            std::string asked;
            const std::optional<bool> expected = reference.Value(trueLeaves, asked);
            const bool empty = clause.GetClauseString().empty() && clause.IsValid();
            malformed += !expected && !empty ? 1U : 0U;
            ASSERT_EQ(clause.evaluate(), empty || expected.value_or(false)) << text << " of " << trueLeaves;
            ASSERT_EQ(m_asked, expected ? asked : "") << text << " of " << trueLeaves;
        }
    }
    EXPECT_GT(malformed, 1000U);
}

}  // namespace
