#include "CJsonValue.h"

#include <cstdlib>
#include <cstring>
#include <stdexcept>

namespace {

struct CReader
{
    const std::string& s;
    size_t n = 0;

    [[noreturn]] void Fail(const char* pszWhat) const { throw std::runtime_error(pszWhat + (" at " + std::to_string(n))); }
    char Peek() // the next character after white space; 0 at the end
    {
        while (n < s.size() && strchr(" \n\r\t", s[n]))
            ++n;
        return n < s.size() ? s[n] : 0;
    }
    void Expect(char c)
    {
        if (Peek() != c)
            Fail("unexpected character");
        ++n;
    }
    std::string Text()
    {
        static const char kFrom[] = "\"\\/nrtbf", kTo[] = "\"\\/\n\r\t\b\f";
        std::string out;
        for (Expect('"'); n < s.size() && s[n] != '"'; ++n)
        {
            if (static_cast<unsigned char>(s[n]) < 0x20)
                Fail("raw control character");
            if (s[n] != '\\')
                out += s[n];
            else if (++n < s.size() && s[n] && strchr(kFrom, s[n]))
                out += kTo[strchr(kFrom, s[n]) - kFrom];
            else if (s.compare(n, 1, "u") == 0 && n + 5 <= s.size() && strtoul(s.substr(n + 1, 4).c_str(), nullptr, 16) < 0x80)
                out += static_cast<char>(strtoul(s.substr(n + 1, 4).c_str(), nullptr, 16)), n += 4;
            else
                Fail("unknown escape, or \\u above ASCII (the probe writes UTF-8)");
        }
        Expect('"');
        return out;
    }
    bool Word(const char* psz) { return s.compare(n, strlen(psz), psz) == 0 && (n += strlen(psz)); }
    CJsonValue Value()
    {
        CJsonValue v;
        const char c = Peek();
        if (c == '{' || c == '[')
        {
            v.kind = c == '{' ? CJsonValue::Object : CJsonValue::Array;
            for (++n; Peek() != (c == '{' ? '}' : ']');)
            {
                if (!v.items.empty() || !v.members.empty())
                    Expect(',');
                if (c == '[')
                    v.items.push_back(Value());
                else if (const std::string name = Text(); (Expect(':'), !v.members.emplace(name, Value()).second))
                    Fail("duplicate member");
            }
            ++n;
        }
        else if (c == '"')
            v.kind = CJsonValue::String, v.text = Text();
        else if (Word("true") || Word("false"))
            v.kind = CJsonValue::Bool, v.b = s[n - 1] == 'e' && s[n - 2] == 'u';
        else if (!Word("null"))
        {
            if (!c || !strchr("-0123456789", c))
                Fail("not a value");
            char* pszEnd = nullptr;
            v.kind = CJsonValue::Number, v.number = strtod(s.c_str() + n, &pszEnd);
            n = static_cast<size_t>(pszEnd - s.c_str());
        }
        return v;
    }
};

} // namespace

CJsonValue CJsonValue::Parse(const std::string& text)
{
    CReader reader{text};
    CJsonValue value = reader.Value();
    if (reader.Peek())
        reader.Fail("text after the document");
    return value;
}
