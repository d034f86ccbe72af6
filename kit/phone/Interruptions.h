#ifndef KIT_PHONE_INTERRUPTIONS_H
#define KIT_PHONE_INTERRUPTIONS_H

namespace kit::phone
{

/// How often Ctrl-C was pressed since it was last set to 0.
int interruptions();
void setInterruptions(int count);

/// Counts Ctrl-C from now on; the third one in a row ends the program at once.
void catchInterruptions();

}  // namespace kit::phone

#endif
