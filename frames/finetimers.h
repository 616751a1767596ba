// While one lives, this process's sleeps end on the millisecond. Windows otherwise lets them last up to 15.6 ms; other
// systems need nothing.
#pragma once

class FineTimers
{
public:
    FineTimers();
    ~FineTimers();
    FineTimers(const FineTimers &) = delete;
    FineTimers &operator=(const FineTimers &) = delete;
};
