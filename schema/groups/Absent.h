// Groups that no Linux machine has.
#pragma once

#include "schema/Group.h"

namespace schema {

inline constexpr Group kOperatingSystemCSIDL{
    .id = 39,
    .name = "Operating System CSIDL",
    .element = "OperatingSystemCSIDL",
    .about = "Special folders of Windows.",
    .notOnLinux = "windows",
};

inline constexpr Group kWinCluster{
    .id = 40,
    .name = "WinCluster",
    .element = "WinCluster",
    .about = "Clusters of Windows machines.",
    .notOnLinux = "windows",
};

inline constexpr Group kWinClusterNode{
    .id = 41,
    .name = "WinClusterNode",
    .element = "WinClusterNode",
    .about = "Nodes of clusters of Windows machines.",
    .notOnLinux = "windows",
};

inline constexpr Group kVEQCluster{
    .id = 42,
    .name = "VEQCluster",
    .element = "VEQCluster",
    .about = "Clusters of a product without an open interface.",
    .notOnLinux = "other-system",
};

inline constexpr Group kVEQClusterNode{
    .id = 43,
    .name = "VEQClusterNode",
    .element = "VEQClusterNode",
    .about = "Nodes of such clusters.",
    .notOnLinux = "other-system",
};

inline constexpr Group kWinCpuMeter{
    .id = 48,
    .name = "WinCpuMeter",
    .element = "WinCpuMeter",
    .about = "Load of processors as Windows counts it.",
    .notOnLinux = "windows",
};

}  // namespace schema
