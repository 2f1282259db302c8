/// A few lines at the bottom of what was written so far, redrawn in place on a terminal.
#pragma once

#include <string>
#include <vector>

#include "Output.h"

namespace vxsub {

/// Whether the output is a terminal on which lines can be drawn again.
bool canRedraw(const Output& out);

/// Whether the output is a terminal that shows colours, and nobody has asked for none (NO_COLOR).
bool canColour(const Output& out);

/// Keys that mean something. Those behind `Space` are arrows.
enum class Key { None, Quit, Space, Left, Right, Up, Down };

/// Takes over some lines of the terminal from the first frame until it is destroyed, with the cursor hidden. Every
/// signal that ends or stops the program first leaves the cursor visible below those lines. One at a time.
class Screen {
public:
    struct Size {
        size_t rows, columns;
    };

    /// What becomes of the keys that are pressed meanwhile.
    enum class Keys { Untouched, Taken };

    explicit Screen(Output& out, Keys keys = Keys::Untouched);
    ~Screen();
    Screen(const Screen&) = delete;
    Screen& operator=(const Screen&) = delete;

    /// The terminal's size now; 24 x 80 when it does not say.
    Size size() const;

    /// Shows `lines` in place of the last frame's, or the last of them when the terminal has fewer rows. Each must be
    /// shorter than the terminal is wide. Draws nothing while the program runs in the background. Throws as
    /// `Output::flush`.
    void draw(std::vector<std::string> lines);

    /// Whether the standard input is a terminal, so that keys can be taken from it.
    static bool hasKeys();

    /// The key that is pressed within so many seconds. Throws as `Output::wait`.
    Key waitForKey(double seconds);

    /// Whether the program was stopped and continued since the last question.
    bool wasStopped();

private:
    bool isInBackground() const;
    void takeKeys();
    void setKeys() const;

    Output& mOut;
    bool mTakesKeys;
    std::string mTyped;  ///< what came and was not yet looked at
    size_t mHeight = 0;
    Size mDrawnAt = {0, 0};
};

}  // namespace vxsub
