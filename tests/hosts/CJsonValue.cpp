#include "CJsonValue.h"

#include <cstdlib>
#include <stdexcept>

class CJsonValue::CReader
{
public:
    explicit CReader(const std::string& text) : m_text(text) {}

    CJsonValue Document()
    {
        CJsonValue value = Value();
        SkipSpace();
        if (m_nPos != m_text.size())
            Fail("text after the document");
        return value;
    }

private:
    [[noreturn]] void Fail(const char* pszWhat) const
    {
        throw std::runtime_error(std::string(pszWhat) + " at offset " + std::to_string(m_nPos));
    }
    void SkipSpace()
    {
        while (m_nPos < m_text.size() && (m_text[m_nPos] == ' ' || m_text[m_nPos] == '\n' || m_text[m_nPos] == '\r' ||
                                          m_text[m_nPos] == '\t'))
            ++m_nPos;
    }
    char Peek()
    {
        SkipSpace();
        if (m_nPos >= m_text.size())
            Fail("unexpected end");
        return m_text[m_nPos];
    }
    void Expect(char c)
    {
        if (Peek() != c)
            Fail("unexpected character");
        ++m_nPos;
    }
    bool Literal(const char* psz)
    {
        const std::string word = psz;
        if (m_text.compare(m_nPos, word.size(), word) != 0)
            return false;
        m_nPos += word.size();
        return true;
    }

    CJsonValue Value()
    {
        CJsonValue value;
        const char c = Peek();
        if (c == '{')
            ReadObject(value);
        else if (c == '[')
            ReadArray(value);
        else if (c == '"')
        {
            value.kind = String;
            value.text = ReadString();
        }
        else if (Literal("true") || Literal("false"))
        {
            value.kind = Bool;
            value.b = m_text[m_nPos - 1] == 'e' && m_text[m_nPos - 2] == 'u';
        }
        else if (Literal("null"))
            value.kind = Null;
        else
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

    void ReadObject(CJsonValue& value)
    {
        value.kind = Object;
        Expect('{');
        if (Peek() == '}')
        {
            ++m_nPos;
            return;
        }
        for (;;)
        {
            if (Peek() != '"')
                Fail("member name expected");
            const std::string name = ReadString();
            Expect(':');
            if (!value.members.emplace(name, Value()).second)
                Fail("duplicate member");
            if (Peek() == '}')
            {
                ++m_nPos;
                return;
            }
            Expect(',');
        }
    }

    void ReadArray(CJsonValue& value)
    {
        value.kind = Array;
        Expect('[');
        if (Peek() == ']')
        {
            ++m_nPos;
            return;
        }
        for (;;)
        {
            value.items.push_back(Value());
            if (Peek() == ']')
            {
                ++m_nPos;
                return;
            }
            Expect(',');
        }
    }

    std::string ReadString()
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
            if (m_nPos >= m_text.size())
                Fail("unfinished escape");
            const char e = m_text[m_nPos++];
            switch (e)
            {
            case '"': case '\\': case '/': out += e; break;
            case 'n': out += '\n'; break;
            case 't': out += '\t'; break;
            case 'r': out += '\r'; break;
            case 'b': out += '\b'; break;
            case 'f': out += '\f'; break;
            case 'u':
            {
                if (m_nPos + 4 > m_text.size())
                    Fail("short \\u escape");
                const unsigned long u = strtoul(m_text.substr(m_nPos, 4).c_str(), nullptr, 16);
                m_nPos += 4;
                if (u >= 0x80)
                    Fail("\\u escape above ASCII is not expected from the probe");
                out += static_cast<char>(u);
                break;
            }
            default:
                Fail("unknown escape");
            }
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
