// Pushes a written file past the system's caches.
#pragma once

class QFile;

// false when the drive did not take all of it. The file is open and flushed.
bool syncToDrive(const QFile &file);
