/*
 * Position-aware JSON loading. The document is parsed twice: once into a
 * value (syntax errors come with their position), and once through a SAX
 * handler fed by an iterator that counts how far the lexer has read, which
 * gives the line of every member key and array element.
 */
#include "json_source.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <iterator>
#include <sstream>
#include <vector>

namespace mdtlm::tools {
namespace {

/* Input iterator over the text that records how many characters were read. */
class CountingIterator {
public:
    using iterator_category = std::input_iterator_tag;
    using value_type = char;
    using difference_type = std::ptrdiff_t;
    using pointer = const char *;
    using reference = const char &;

    CountingIterator(const char *base, const char *pos, size_t *consumed)
        : base_(base), pos_(pos), consumed_(consumed)
    {
    }
    reference operator*() const { return *pos_; }
    CountingIterator &operator++()
    {
        ++pos_;
        *consumed_ = static_cast<size_t>(pos_ - base_);
        return *this;
    }
    CountingIterator operator++(int)
    {
        CountingIterator before = *this;
        ++*this;
        return before;
    }
    bool operator==(const CountingIterator &other) const { return pos_ == other.pos_; }
    bool operator!=(const CountingIterator &other) const { return pos_ != other.pos_; }

private:
    const char *base_;
    const char *pos_;
    size_t *consumed_;
};

std::string EscapeToken(const std::string &key)
{
    std::string out;
    for (char c : key) {
        if (c == '~') {
            out += "~0";
        } else if (c == '/') {
            out += "~1";
        } else {
            out += c;
        }
    }
    return out;
}

/* SAX handler that only notes where each member and element begins. */
class LineRecorder : public nlohmann::json_sax<nlohmann::json> {
public:
    LineRecorder(const std::string &text, const size_t &consumed, std::map<std::string, int> &lines)
        : consumed_(consumed), lines_(lines)
    {
        for (size_t i = 0; i < text.size(); ++i) {
            if (text[i] == '\n') {
                newlines_.push_back(i);
            }
        }
    }

    bool null() override { return Scalar(); }
    bool boolean(bool) override { return Scalar(); }
    bool number_integer(number_integer_t) override { return Scalar(); }
    bool number_unsigned(number_unsigned_t) override { return Scalar(); }
    bool number_float(number_float_t, const string_t &) override { return Scalar(); }
    bool string(string_t &) override { return Scalar(); }
    bool binary(binary_t &) override { return Scalar(); }
    bool start_object(std::size_t) override
    {
        stack_.push_back({false, 0, Begin(), ""});
        return true;
    }
    bool key(string_t &name) override
    {
        Frame &top = stack_.back();
        top.key = EscapeToken(name);
        lines_.emplace(top.pointer + "/" + top.key, CurrentLine());
        return true;
    }
    bool end_object() override
    {
        stack_.pop_back();
        return true;
    }
    bool start_array(std::size_t) override
    {
        stack_.push_back({true, 0, Begin(), ""});
        return true;
    }
    bool end_array() override
    {
        stack_.pop_back();
        return true;
    }
    bool parse_error(std::size_t, const std::string &, const nlohmann::detail::exception &) override
    {
        return false;
    }

private:
    struct Frame {
        bool array;
        size_t index;
        std::string pointer;
        std::string key;
    };

    /* The line of the last character the lexer has read. */
    int CurrentLine() const
    {
        size_t last = consumed_ > 0 ? consumed_ - 1 : 0;
        auto before = std::lower_bound(newlines_.begin(), newlines_.end(), last);
        return 1 + static_cast<int>(before - newlines_.begin());
    }

    /* A value begins: its pointer, noting the line of array elements and the root. */
    std::string Begin()
    {
        if (stack_.empty()) {
            lines_.emplace("", CurrentLine());
            return "";
        }
        Frame &top = stack_.back();
        if (!top.array) {
            return top.pointer + "/" + top.key;
        }
        std::string pointer = top.pointer + "/" + std::to_string(top.index++);
        lines_.emplace(pointer, CurrentLine());
        return pointer;
    }
    bool Scalar()
    {
        Begin();
        return true;
    }

    const size_t &consumed_;
    std::map<std::string, int> &lines_;
    std::vector<size_t> newlines_;
    std::vector<Frame> stack_;
};

std::pair<int, int> LineAndColumn(const std::string &text, size_t index)
{
    int line = 1;
    int column = 1;
    for (size_t i = 0; i < index && i < text.size(); ++i) {
        if (text[i] == '\n') {
            ++line;
            column = 1;
        } else {
            ++column;
        }
    }
    return {line, column};
}

} // namespace

JsonSource JsonSource::Load(const std::string &path)
{
    std::ifstream in(path, std::ios::binary);
    if (!in) {
        throw InputError(path + ": cannot read the file: " + std::strerror(errno));
    }
    std::ostringstream text;
    text << in.rdbuf();
    return Parse(path, text.str());
}

JsonSource JsonSource::Parse(const std::string &path, const std::string &text)
{
    JsonSource source;
    source.path_ = path;
    try {
        source.root_ = nlohmann::json::parse(text);
    } catch (const nlohmann::json::parse_error &e) {
        auto [line, column] = LineAndColumn(text, e.byte > 0 ? e.byte - 1 : 0);
        std::string what = e.what();
        size_t detail = what.find("syntax error");
        throw InputError(path + ":" + std::to_string(line) + ":" + std::to_string(column) + ": " +
                         (detail == std::string::npos ? what : what.substr(detail)));
    }
    size_t consumed = 0;
    LineRecorder recorder(text, consumed, source.lines_);
    CountingIterator first(text.data(), text.data(), &consumed);
    CountingIterator last(text.data(), text.data() + text.size(), &consumed);
    nlohmann::json::sax_parse(first, last, &recorder);
    return source;
}

int JsonSource::Line(const std::string &pointer) const
{
    std::string at = pointer;
    for (;;) {
        auto found = lines_.find(at);
        if (found != lines_.end()) {
            return found->second;
        }
        if (at.empty()) {
            return 1;
        }
        at.erase(at.rfind('/'));
    }
}

std::string JsonSource::Where(const std::string &pointer) const
{
    std::string field = FieldName(pointer);
    return path_ + ":" + std::to_string(Line(pointer)) + ": " + (field.empty() ? "" : field + ": ");
}

void JsonSource::Fail(const std::string &pointer, const std::string &message) const
{
    throw InputError(Where(pointer) + message);
}

std::string JsonSource::FieldName(const std::string &pointer)
{
    std::string name;
    size_t pos = 0;
    while (pos < pointer.size()) {
        size_t next = pointer.find('/', pos + 1);
        std::string token = pointer.substr(pos + 1, next == std::string::npos ? std::string::npos : next - pos - 1);
        std::string unescaped;
        for (size_t i = 0; i < token.size(); ++i) {
            if (token[i] == '~' && i + 1 < token.size()) {
                unescaped += token[i + 1] == '1' ? '/' : '~';
                ++i;
            } else {
                unescaped += token[i];
            }
        }
        bool index = !unescaped.empty() && std::all_of(unescaped.begin(), unescaped.end(), ::isdigit);
        if (index) {
            name += "[" + unescaped + "]";
        } else {
            name += (name.empty() ? "" : ".") + unescaped;
        }
        pos = next == std::string::npos ? pointer.size() : next;
    }
    return name;
}

} // namespace mdtlm::tools
