#pragma once

#include <cctype>
#include <cstring>
#include <string_view>

namespace tarnwick {

// Judges whether a text is one JSON value and nothing more. Strings are looked at by the byte.
class JsonText {
  public:
    explicit JsonText(std::string_view text) : text_(text) {}
    bool is_valid() { return value() && (skip_spaces(), text_.empty()); }

  private:
    void skip_spaces()
    {
        while (!text_.empty() && std::strchr(" \n\r\t", text_.front())) text_.remove_prefix(1);
    }
    bool take(std::string_view word)
    {
        skip_spaces();
        if (!text_.starts_with(word)) return false;
        text_.remove_prefix(word.size());
        return true;
    }
    bool value()
    {
        if (take("{")) return list("}", &JsonText::member);
        if (take("[")) return list("]", &JsonText::value);
        if (take("\"")) return rest_of_string();
        return take("null") || take("true") || take("false") || number();
    }
    bool list(std::string_view end, bool (JsonText::*item)())
    {
        if (take(end)) return true;
        do
            if (!(this->*item)()) return false;
        while (take(","));
        return take(end);
    }
    bool member() { return take("\"") && rest_of_string() && take(":") && value(); }
    bool rest_of_string()
    {
        while (!text_.empty()) {
            const auto c = static_cast<unsigned char>(text_.front());
            text_.remove_prefix(1);
            if (c == '"') return true;
            if (c < ' ') return false;
            if (c == '\\' && !escape()) return false;
        }
        return false;
    }
    bool escape()
    {
        if (text_.empty() || !std::strchr("\"\\/bfnrtu", text_.front())) return false;
        const std::size_t length = text_.front() == 'u' ? 5 : 1;
        if (text_.size() < length) return false;
        for (std::size_t k = 1; k < length; ++k)
            if (!std::isxdigit(static_cast<unsigned char>(text_[k]))) return false;
        text_.remove_prefix(length);
        return true;
    }
    bool digits()
    {
        const auto length = text_.find_first_not_of("0123456789");
        const std::size_t count = length == text_.npos ? text_.size() : length;
        text_.remove_prefix(count);
        return count > 0;
    }
    bool number()
    {
        take("-");
        if (text_.starts_with("0") && text_.size() > 1 && std::isdigit(text_[1])) return false;
        if (!digits() || (take(".") && !digits())) return false;
        if (!take("e") && !take("E")) return true;
        if (!take("+")) take("-");
        return digits();
    }

    std::string_view text_;
};

}  // namespace tarnwick
