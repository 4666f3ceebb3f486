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

    // Counts objects that can be changed, and are not named.
    void AddFurther(std::size_t number, const std::string& folder)
    {
        if (number != 0) {
            count_ += number;
            text_ += "\nand " + std::to_string(number) + " more below " + folder;
            remedies_.emplace_back("For the rest: daemonctl doctor");
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

// Returns whether what lies below one of the folders is looked at, and so this object with it.
bool IsInContents(const std::string& path, const RightsFacts& facts)
{
    return std::any_of(facts.contents.begin(), facts.contents.end(), [&](const auto& content) {
        return WithoutCase(path).starts_with(WithoutCase(content.folder) + "\\");
    });
}

// Returns whether the object is a place that is judged by its role.
bool IsPlaceOfItsOwn(const ObjectRights& rights, const RightsFacts& facts)
{
    const std::string path = WithoutCase(rights.path);
    return std::any_of(facts.places.begin(), facts.places.end(), [&](const PlaceFacts& place) {
        return place.role != PlaceFacts::Role::kAbove && WithoutCase(place.rights.path) == path;
    });
}

// Returns whether a folder above a program is among the weak ones below a folder of programs. There
// it is judged more strictly: nobody else may even add a file to it.
bool IsWeakContent(const PlaceFacts& place, const RightsFacts& facts)
{
    const std::string path = WithoutCase(place.rights.path);
    return place.role == PlaceFacts::Role::kAbove &&
           std::any_of(facts.contents.begin(), facts.contents.end(), [&](const auto& content) {
               return std::any_of(
                   content.weak.begin(), content.weak.end(),
                   [&](const ObjectRights& weak) { return WithoutCase(weak.path) == path; });
           });
}

// Adds what others can change below a folder of programs.
void AddContent(const ContentRights& content, const RightsFacts& facts, WeakObjects& weak)
{
    for (const ObjectRights& rights : content.weak) {
        if (!IsPlaceOfItsOwn(rights, facts)) {
            const bool isFolder = rights.kind == ObjectRights::Kind::kFolder;
            const PlaceFacts place{rights, isFolder ? PlaceFacts::Role::kPrograms
                                                    : PlaceFacts::Role::kProgram};
            weak.Add(Weaknesses(rights, facts.administrators), {},
                     IsBehindLink(place, facts)
                         ? std::vector<std::string>()
                         : RemediesFor(place, facts.administrators, facts.supervisorSid));
        }
    }
    weak.AddFurther(content.further, content.folder);
}

// Says that a folder was not looked at to its end; empty if all were.
std::string RestOf(const std::vector<ContentRights>& contents)
{
    std::string text;
    for (const ContentRights& content : contents) {
        if (!content.complete) {
            text += "\n" + content.folder + " holds more than the " +
                    std::to_string(content.looked) +
                    " files and folders that were looked at: daemonctl rights --below looks at all";
        }
    }
    return text;
}

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
        if (IsMissing(place.rights) || IsWeakContent(place, facts)) {
            continue;
        }
        there += IsInContents(place.rights.path, facts) ? 0U : 1U;
        const TrustedSids trusted = TrustedWith(facts, place.role);
        weak.Add(place.role == PlaceFacts::Role::kAbove ? WeaknessesOfParent(place.rights, trusted)
                                                        : Weaknesses(place.rights, trusted),
                 IsOfLog(place.role) ? Readers(place.rights, trusted) : std::vector<std::string>(),
                 IsBehindLink(place, facts) ? std::vector<std::string>()
                                            : RemediesFor(place, trusted, facts.supervisorSid));
    }
    for (const ContentRights& content : facts.contents) {
        there += content.looked;
        AddContent(content, facts, weak);
    }
    for (const std::string& path : facts.unjudged) {
        ++there;
        weak.Add({path + " lies on a network, or is no path: its rights prove nothing"}, {},
                 {"Use programs on a drive of this machine."});
    }
    Finding finding = FindingAbout("file-rights", std::to_string(there) + " files and folders",
                                   weak, "As administrator, in this order:");
    finding.text += RestOf(facts.contents);
    return finding;
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
