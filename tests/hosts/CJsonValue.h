// A small, strict JSON reader, so a test fails on output another program could not parse.
#pragma once

#include <map>
#include <string>
#include <vector>

struct CJsonValue
{
    enum Kind { Null, Bool, Number, String, Array, Object } kind = Null;
    bool b = false;
    double number = 0.0;
    std::string text; // UTF-8
    std::vector<CJsonValue> items;
    std::map<std::string, CJsonValue> members;

    // Throws std::runtime_error on anything that is not one complete JSON document.
    static CJsonValue Parse(const std::string& text);
    bool Has(const std::string& name) const { return members.count(name) != 0; }
    const CJsonValue& operator[](const std::string& name) const { return members.at(name); } // throws when missing
};
