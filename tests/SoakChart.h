#pragma once

#include <string>
#include <vector>

/// What one second of a long run showed.
struct SoakSample {
    double dSeconds;          ///< since the start
    double dHostMegabytes;    ///< resident memory of the host
    double dClientMegabytes;  ///< of the clients that live as long as the run, summed
    int nHostDescriptors;
    int nClientDescriptors;  ///< of the same clients, summed
};

/// A picture of a run as SVG: memory above, descriptors below, the seconds along both.
std::string DrawSoak(std::vector<SoakSample> const& samples, std::string const& strTitle);
