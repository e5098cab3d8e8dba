// Text for the user's terminal or a file it is redirected to, written as UTF-8 bytes with plain
// line feeds. A GUI program started from a console has no output handle of its own; it borrows
// the parent console's when there is one.
#pragma once

#include <windows.h>

#include <string>

class CStdOut
{
public:
    enum Stream { Output, Error };
    explicit CStdOut(Stream stream);

    void Write(const std::string& text) const;
    void WriteLine(const std::string& text) const { Write(text + "\n"); }
    // A terminal, not a file or a pipe: worth redrawing a progress line on.
    bool IsTerminal() const;

private:
    HANDLE m_hOut;
};
