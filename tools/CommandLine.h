#ifndef VESK_TOOLS_COMMANDLINE_H
#define VESK_TOOLS_COMMANDLINE_H

// Names of the command line's parser. Its own header takes longer to compile than the rest of a
// file: only files that define options include it.
namespace CLI {
class App;
class Option;
}  // namespace CLI

#endif
