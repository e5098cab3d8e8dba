#include "CJsonValue.h"

#include <cstdlib>
#include <cstring>
#include <stdexcept>

class CJsonValue::CReader
{
public:
    explicit CReader(const std::string& text) : m_text(text) {}
    CJsonValue Document()
    {
        CJsonValue value = Value();
        if (Peek(true))
            Fail("text after the document");
        return value;
    }

private:
    [[noreturn]] void Fail(const char* pszWhat) const
    {
        throw std::runtime_error(std::string(pszWhat) + " at offset " + std::to_string(m_nPos));
    }
    // The next character after white space; at the end, 0 if allowed.
    char Peek(bool bEndAllowed = false)
    {
        while (m_nPos < m_text.size() && strchr(" \n\r\t", m_text[m_nPos]) && m_text[m_nPos])
            ++m_nPos;
        if (m_nPos >= m_text.size() && !bEndAllowed)
            Fail("unexpected end");
        return m_nPos < m_text.size() ? m_text[m_nPos] : 0;
    }
    void Expect(char c)
    {
        if (Peek() != c)
            Fail("unexpected character");
        ++m_nPos;
    }
    bool Literal(const std::string& word)
    {
        const bool bFound = m_text.compare(m_nPos, word.size(), word) == 0;
        m_nPos += bFound ? word.size() : 0;
        return bFound;
    }
    // Reads the items of an array or the members of an object up to the closing bracket.
    template <class ReadOne>
    void List(char cOpen, char cClose, ReadOne readOne)
    {
        Expect(cOpen);
        if (Peek() == cClose)
            return void(++m_nPos);
        for (readOne(); Peek() != cClose; readOne())
            Expect(',');
        ++m_nPos;
    }
    CJsonValue Value()
    {
        CJsonValue value;
        const char c = Peek();
        if (c == '{')
        {
            value.kind = Object;
            List('{', '}', [&] {
                if (Peek() != '"')
                    Fail("member name expected");
                const std::string name = String();
                Expect(':');
                if (!value.members.emplace(name, Value()).second)
                    Fail("duplicate member");
            });
        }
        else if (c == '[')
        {
            value.kind = Array;
            List('[', ']', [&] { value.items.push_back(Value()); });
        }
        else if (c == '"')
        {
            value.kind = CJsonValue::String;
            value.text = String();
        }
        else if (Literal("true") || Literal("false"))
        {
            value.kind = Bool;
            value.b = m_text[m_nPos - 1] == 'e' && m_text[m_nPos - 2] == 'u';
        }
        else if (!Literal("null"))
        {
            value.kind = Number;
            const char* pszStart = m_text.c_str() + m_nPos;
            char* pszEnd = nullptr;
            value.number = strtod(pszStart, &pszEnd);
            if (pszEnd == pszStart)
                Fail("not a value");
            m_nPos += static_cast<size_t>(pszEnd - pszStart);
        }
        return value;
    }
    std::string String()
    {
        Expect('"');
        std::string out;
        while (m_nPos < m_text.size() && m_text[m_nPos] != '"')
        {
            const unsigned char c = static_cast<unsigned char>(m_text[m_nPos++]);
            if (c < 0x20)
                Fail("raw control character in a string");
            if (c != '\\')
            {
                out += static_cast<char>(c);
                continue;
            }
            const char e = m_nPos < m_text.size() ? m_text[m_nPos++] : 0;
            static const char kFrom[] = "\"\\/nrtbf", kTo[] = "\"\\/\n\r\t\b\f";
            if (e && strchr(kFrom, e))
                out += kTo[strchr(kFrom, e) - kFrom];
            else if (e == 'u' && m_nPos + 4 <= m_text.size())
            {
                const unsigned long u = strtoul(m_text.substr(m_nPos, 4).c_str(), nullptr, 16);
                m_nPos += 4;
                if (u >= 0x80)
                    Fail("\\u escape above ASCII is not expected from the probe");
                out += static_cast<char>(u);
            }
            else
                Fail("unknown or unfinished escape");
        }
        Expect('"');
        return out;
    }

    const std::string& m_text;
    size_t m_nPos = 0;
};

CJsonValue CJsonValue::Parse(const std::string& text)
{
    return CReader(text).Document();
}

const CJsonValue& CJsonValue::operator[](const std::string& name) const
{
    auto it = members.find(name);
    if (it == members.end())
        throw std::runtime_error("no member " + name);
    return it->second;
}
