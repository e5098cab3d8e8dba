// Reads back what the probe writes: a small, strict JSON reader, so a test fails on output that
// another program could not parse rather than on text that merely looks right.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

class CJsonValue
{
public:
    enum Kind { Null, Bool, Number, String, Array, Object };

    // Throws std::runtime_error on anything that is not one complete JSON document.
    static CJsonValue Parse(const std::string& text);

    Kind kind = Null;
    bool b = false;
    double number = 0.0;
    std::string text; // UTF-8
    std::vector<CJsonValue> items;
    std::map<std::string, CJsonValue> members;

    bool Has(const std::string& name) const { return members.count(name) != 0; }
    // The member of that name; throws when it is missing.
    const CJsonValue& operator[](const std::string& name) const;

private:
    class CReader;
};
