#include "recipe/recipe_members.h"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <set>

#include "storage/settings_json.h"
#include "util/log/message.h"

namespace skarnel {
namespace {

using Json = nlohmann::json;
using Names = std::set<std::string, std::less<>>;

/// Collects the members as they are read. The library's trees would need memory even to be
/// destroyed, and a stack as deep as the file is nested to be printed.
class MembersReader final : public nlohmann::json_sax<Json> {
  public:
    explicit MembersReader(RecipeMembers& members) : members_(members) {}
    bool isMarked() const { return marked_; }
    /// How many bytes were read when it went wrong; one more than there are at their end.
    std::size_t errorPosition() const { return errorPosition_; }

    bool null() override { return isInside(); }
    bool boolean(bool value) override {
        if (isSetting()) members_.settings.insert_or_assign(name_, value);
        return isInside();
    }
    bool number_integer(number_integer_t value) override {
        return number(static_cast<double>(value));
    }
    bool number_unsigned(number_unsigned_t value) override {
        putVersion(static_cast<double>(value), std::to_string(value));
        return number(static_cast<double>(value));
    }
    bool number_float(number_float_t value, const string_t& text) override {
        const bool isWhole = text.find_first_not_of("0123456789") == std::string::npos;
        if (isWhole) putVersion(value, text);  // beyond 64 bits
        return number(value);
    }
    bool string(string_t& value) override {
        if (isSetting()) put(settingOfText(value));
        if (isMember(kRecipeMark)) marked_ = value == kRecipeMarkValue;
        if (isMember(kRecipeBackground)) members_.background = value;
        if (isMember(kRecipeText)) members_.text = std::move(value);
        return isInside();
    }
    bool binary(binary_t&) override { return isInside(); }

    bool start_object(std::size_t) override {
        if (isMember(kRecipeSettings)) members_.hasSettings = inSettings_ = true;
        ++depth_;
        return true;
    }
    bool end_object() override { return leave(); }
    bool start_array(std::size_t) override {
        const bool inside = isInside();
        ++depth_;
        return inside;
    }
    bool end_array() override { return leave(); }

    bool key(string_t& value) override {
        if (depth_ == kMemberDepth) startMember(value);
        if (isSetting()) startSetting(value);
        return true;
    }
    bool parse_error(std::size_t position, const std::string&, const Json::exception&) override {
        errorPosition_ = position;
        return false;
    }

  private:
    static constexpr std::size_t kLongestVersion = 24;  // characters; 64 bits take 20
    static constexpr std::uint64_t kMemberDepth = 1;
    static constexpr std::uint64_t kSettingDepth = 2;

    bool isInside() const { return depth_ > 0; }  // outside there is no object, and nothing to read
    bool isMember(std::string_view name) const { return depth_ == kMemberDepth && name_ == name; }
    bool isSetting() const { return inSettings_ && depth_ == kSettingDepth; }

    void startMember(const std::string& name) {
        name_ = name;
        if (!memberNames_.insert(name).second)
            members_.doubled = name;
        else
            members_.names.push_back(name);
    }
    void startSetting(const std::string& name) {
        name_ = name;
        ++members_.settingCount;
        if (!settingNames_.insert(name).second) members_.doubled = name;
    }
    bool number(double value) {
        if (isSetting()) put(settingOfNumber(value));
        return isInside();
    }
    void putVersion(double number, std::string_view text) {
        if (isMember(kRecipeVersionName)) {
            members_.version = {number, std::string(text.substr(0, kLongestVersion))};
        }
    }
    void put(std::optional<float> value) {
        if (value) members_.settings.insert_or_assign(name_, *value);
    }
    bool leave() {
        --depth_;
        if (depth_ == kMemberDepth) inSettings_ = false;
        return true;
    }

    RecipeMembers& members_;
    Names memberNames_;
    Names settingNames_;
    std::string name_;  // of the member or setting whose value comes next
    std::uint64_t depth_ = 0;
    bool inSettings_ = false;
    bool marked_ = false;
    std::size_t errorPosition_ = 0;
};

Error brokenOff(bool isMarked, std::size_t position, std::size_t size) {
    const bool atEnd = position > size;
    if (!isMarked && atEnd && size > 0)
        return {ErrorCode::UnknownFormat, "This is not a recipe, or only the beginning of one"};
    if (!isMarked) return {ErrorCode::UnknownFormat, "This is not a recipe"};
    if (atEnd) return {ErrorCode::Damaged, "The recipe is cut off"};
    return {ErrorCode::Damaged,
            filled("The recipe is damaged at byte %1", {std::to_string(position)})};
}

}  // namespace

bool RecipeMembers::has(std::string_view name) const {
    return std::find(names.begin(), names.end(), name) != names.end();
}

Result<RecipeMembers> membersOfRecipe(ByteView bytes) {
    RecipeMembers members;
    MembersReader reader(members);
    const bool parsed = Json::sax_parse(bytes.begin(), bytes.end(), &reader);
    if (!parsed) return brokenOff(reader.isMarked(), reader.errorPosition(), bytes.size());
    if (!reader.isMarked()) return {ErrorCode::UnknownFormat, "This is not a recipe"};
    return members;
}

}  // namespace skarnel
