#include "output/NameSuggestions.h"

#include <algorithm>
#include <numeric>
#include <utility>

#include "Quillet/base/CString.h"
#include "output/PlainText.h"

namespace quillet::tool {

namespace {

constexpr std::size_t MostListed = 12;
constexpr std::size_t MostSuggested = 3;
// Names with a larger distance are not similar; short names must be closer.
constexpr std::size_t FarthestSuggested = 2;

// The number of letters to insert, remove, change or swap with the next to turn one text into the other.
std::size_t EditDistance(WideView left, WideView right) {
    // The distances of the last three prefixes of left to every prefix of right.
    std::vector<std::size_t> beforeLast;
    std::vector<std::size_t> last;
    std::vector<std::size_t> current(right.size() + 1);
    std::iota(current.begin(), current.end(), std::size_t{0});
    for (std::size_t i = 0; i < left.size(); ++i) {
        beforeLast = std::exchange(last, current);
        current[0] = i + 1;
        for (std::size_t j = 0; j < right.size(); ++j) {
            const std::size_t changed = last[j] + (left[i] == right[j] ? 0U : 1U);
            current[j + 1] = std::min({changed, last[j + 1] + 1, current[j] + 1});
            if (i > 0 && j > 0 && left[i] == right[j - 1] && left[i - 1] == right[j]) {
                current[j + 1] = std::min(current[j + 1], beforeLast[j - 1] + 1);
            }
        }
    }
    return current.back();
}

bool IsNear(const CString& wanted, const CString& known) {
    constexpr std::size_t LettersPerError = 3;
    const std::size_t allowed =
        std::min(FarthestSuggested, std::max<std::size_t>(1, wanted.View().size() / LettersPerError));
    const WideView left = wanted.View();
    const WideView right = known.View();
    const bool isBeginning = !left.empty() && right.starts_with(left);
    const bool hasOtherLength = left.size() > right.size() + allowed || right.size() > left.size() + allowed;
    return isBeginning || (left.size() > 1 && !hasOtherLength && EditDistance(left, right) <= allowed);
}

}  // namespace

std::string SuggestNames(const std::string& wanted, const std::vector<std::string>& known,
                         Spelling spelling) {
    std::vector<std::string> similar;
    const CString lowered = Lowered(wanted);
    for (const std::string& name : known) {
        if (similar.size() < MostSuggested && IsNear(lowered, Lowered(name))) {
            similar.push_back(spelling == nullptr ? name : spelling(name));
        }
    }
    if (!similar.empty()) {
        return "did you mean " + JoinQuoted(similar, "or") + "?";
    }
    if (known.empty()) {
        return "there are none";
    }
    const std::size_t listed = std::min(MostListed, known.size());
    std::string list =
        "there are " + JoinNames({known.begin(), known.begin() + static_cast<std::ptrdiff_t>(listed)});
    if (listed < known.size()) {
        list += " and " + std::to_string(known.size() - listed) + " more";
    }
    return list;
}

bool AreSimilar(const std::string& wanted, const std::string& known) {
    return IsNear(Lowered(wanted), Lowered(known));
}

std::string JoinQuoted(const std::vector<std::string>& names, const std::string& last) {
    std::string joined;
    for (std::size_t i = 0; i < names.size(); ++i) {
        joined += i == 0 ? "" : i + 1 == names.size() ? " " + last + " " : ", ";
        joined += Quoted(names[i]);
    }
    return joined;
}

std::string JoinNames(const std::vector<std::string>& names) {
    std::string joined;
    for (const std::string& name : names) {
        joined += (joined.empty() ? "" : ", ") + name;
    }
    return joined;
}

}  // namespace quillet::tool
