// The user thread's messages when there is no window: the thread waits here in the place of a
// window's message loop.
//
// The messages stand for those of the window: StartMain for WM_START_MAIN (start a run), Finish for
// WM_FINISH (end the program), Close for WM_CLOSE (the user closes the window). Any thread posts,
// the user thread waits; one lock inside, under which nothing else is called.
#pragma once

namespace vlt {

enum class UserMessage { StartMain, Finish, Close };

// Puts a message at the end of the queue and returns at once.
void gf_postUserMessage(UserMessage message);

// Takes the first message off the queue, waiting for one as long as it takes.
UserMessage gf_waitUserMessage();

}  // namespace vlt
