#pragma once

/// The C++ runtime notes the exceptions of each thread in some bytes of the thread's own. A process that loads the
/// runtime late, as an interpreter does for a module, has these bytes from the heap when a thread asks for them first,
/// and is ended by the C library where there is no memory for them.
///
/// A library that has this function in it asks the loader to give each thread the bytes with its stack, which it does
/// unless somebody asked for them before. Calling it asks for them once more, in case they come from the heap. False,
/// and nothing is asked for, where there is so little memory that the process would end.
///
/// To be called when a thread begins that may have to go on without memory. This header includes nothing of the project
/// and is open to all floors.
bool PreparesForExceptions() noexcept;
