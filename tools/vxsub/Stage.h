/// The stages of work that takes its time, for whoever shows how far it is.
#pragma once

namespace vxsub {

enum class Stage {
    Scanning,  ///< the library reads the file
    Texts,     ///< its texts are fetched
    Meaning,   ///< the file is read as it was meant
    Comparing,
    Writing,
};

/// Says that a stage begins. A terminal shows nothing of it.
void enter(Stage stage);

}  // namespace vxsub
