#include "RightsChecks.h"

#include "LetterCase.h"
#include "RightsRemedies.h"

#include <algorithm>
#include <cstddef>

namespace vqrx::client::v0 {
namespace {

// Returns whether a file or a key does not exist. Then this check says nothing about it: other
// checks report it. The numbers are ERROR_FILE_NOT_FOUND and ERROR_PATH_NOT_FOUND (winerror.h,
// which a native build lacks).
bool IsMissing(const ObjectRights& rights)
{
    return rights.error == 2 || rights.error == 3;
}

TrustedSids TrustedWith(const RightsFacts& facts, PlaceFacts::Role role)
{
    TrustedSids trusted = facts.administrators;
    if (IsOfLog(role) && !facts.supervisorSid.empty()) {
        trusted.insert(facts.supervisorSid);
    }
    return trusted;
}

// A command for the rights of such a place would change what the link leads to.
bool IsBehindLink(const PlaceFacts& place, const RightsFacts& facts)
{
    const std::string path = WithoutCase(place.rights.path);
    return std::any_of(facts.places.begin(), facts.places.end(), [&](const PlaceFacts& other) {
        return other.rights.reparsePoint && path.starts_with(WithoutCase(other.rights.path) + "\\");
    });
}

// The weak objects of a check, as texts.
class WeakObjects {
public:
    // @param weaknesses  why somebody can change the object
    // @param readers     who should not read it, and can
    void Add(const std::vector<std::string>& weaknesses, const std::vector<std::string>& readers,
             const std::vector<std::string>& remedy)
    {
        if (weaknesses.empty() && readers.empty()) {
            return;
        }
        ++count_;
        canChange_ = canChange_ || !weaknesses.empty();
        canRead_ = canRead_ || !readers.empty();
        for (const std::vector<std::string>* const texts : {&weaknesses, &readers}) {
            for (const std::string& text : *texts) {
                text_ += "\n" + text;
            }
        }
        for (const std::string& line : remedy) {
            if (std::find(remedies_.begin(), remedies_.end(), line) == remedies_.end()) {
                remedies_.push_back(line);
            }
        }
    }

    [[nodiscard]] std::size_t Count() const noexcept { return count_; }
    [[nodiscard]] const std::string& Text() const noexcept { return text_; }
    [[nodiscard]] const char* Deed() const noexcept
    {
        return !canRead_ ? "change " : canChange_ ? "change or read " : "read ";
    }

    [[nodiscard]] std::string Remedy(const std::string& heading) const
    {
        std::string text = heading;
        for (const std::string& line : remedies_) {
            text += "\n" + line;
        }
        return text;
    }

private:
    std::size_t count_ = 0;
    bool canChange_ = false;
    bool canRead_ = false;
    std::string text_;
    std::vector<std::string> remedies_;
};

// @param objects  how many objects were looked at, and what they are
// @param heading  stands above the remedies
Finding FindingAbout(const char* check, const std::string& objects, const WeakObjects& weak,
                     const char* heading)
{
    if (weak.Count() == 0) {
        return Ok(check, "only administrators can change the " + objects +
                             " on which the supervisor relies");
    }
    return Warning(check,
                   std::string("others than administrators can ") + weak.Deed() +
                       std::to_string(weak.Count()) + " of " + objects +
                       " on which the supervisor relies" + weak.Text(),
                   weak.Remedy(heading));
}

} // namespace

Finding JudgeFileRights(const RightsFacts& facts)
{
    WeakObjects weak;
    std::size_t there = 0;
    for (const PlaceFacts& place : facts.places) {
        if (IsMissing(place.rights)) {
            continue;
        }
        ++there;
        const TrustedSids trusted = TrustedWith(facts, place.role);
        weak.Add(place.role == PlaceFacts::Role::kAbove ? WeaknessesOfParent(place.rights, trusted)
                                                        : Weaknesses(place.rights, trusted),
                 IsOfLog(place.role) ? Readers(place.rights, trusted) : std::vector<std::string>(),
                 IsBehindLink(place, facts) ? std::vector<std::string>()
                                            : RemediesFor(place, trusted, facts.supervisorSid));
    }
    for (const std::string& path : facts.unjudged) {
        ++there;
        weak.Add({path + " lies on a network, or is no path: its rights prove nothing"}, {},
                 {"Use programs on a drive of this machine."});
    }
    return FindingAbout("file-rights", std::to_string(there) + " files and folders", weak,
                        "As administrator, in this order:");
}

Finding JudgeKeyRights(const RightsFacts& facts)
{
    WeakObjects weak;
    std::size_t there = 0;
    for (const ObjectRights& key : facts.keys) {
        if (IsMissing(key)) {
            continue;
        }
        ++there;
        weak.Add(Weaknesses(key, facts.administrators), {}, RemediesForKey(key));
    }
    return FindingAbout("key-rights", std::to_string(there) + " registry keys", weak,
                        "In PowerShell, as administrator:");
}

} // namespace vqrx::client::v0
