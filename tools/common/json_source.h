/*
 * A JSON file together with the line on which each of its members and array
 * elements stands, so that a complaint about a value can name the file, the
 * line and the field ("demo.json:14: tasks[2].filters[0].operator: ...").
 */
#ifndef MDTLM_TOOLS_JSON_SOURCE_H
#define MDTLM_TOOLS_JSON_SOURCE_H

#include <map>
#include <stdexcept>
#include <string>

#include <nlohmann/json.hpp>

namespace mdtlm::tools {

/* A complaint about an input file; what() is the complete message. */
class InputError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

class JsonSource {
public:
    /* Reads and parses a file; unreadable files and syntax errors throw InputError. */
    static JsonSource Load(const std::string &path);
    /* Parses text that claims to come from `path`. */
    static JsonSource Parse(const std::string &path, const std::string &text);

    const nlohmann::json &Root() const { return root_; }
    const std::string &Path() const { return path_; }

    /* Line of the member or element at a JSON pointer ("/tasks/2/sensor");
     * for a pointer that names nothing, the line of its nearest parent. */
    int Line(const std::string &pointer) const;

    /* "FILE:LINE: FIELD: " for the value at `pointer`. */
    std::string Where(const std::string &pointer) const;
    /* Throws InputError "FILE:LINE: FIELD: message" for the value at `pointer`. */
    [[noreturn]] void Fail(const std::string &pointer, const std::string &message) const;

    /* "/tasks/2/filters/0/operator" -> "tasks[2].filters[0].operator". */
    static std::string FieldName(const std::string &pointer);

private:
    std::string path_;
    nlohmann::json root_;
    std::map<std::string, int> lines_;
};

} // namespace mdtlm::tools

#endif /* MDTLM_TOOLS_JSON_SOURCE_H */
