#pragma once
/// What a process sets right before it opens or writes anything.

/// Opens /dev/null in the place of standard streams that are closed, as under some daemons: a file
/// that is opened next would stand there, and be written over.
void fill_standard_streams();

/// From now on a write that a limit or a broken pipe prevents fails, and is told, instead of
/// killing the process by a signal.
void outlive_failed_writes();
