#include "platform/linux/LinuxMachine.h"

#include <gtest/gtest.h>

#include "base/TemporaryFolder.h"

namespace morvelin {
namespace {

TEST(LinuxMachine, CountsTheFastestCoresOnce) {
    const TemporaryFolder sys;
    const auto processors = sys.path() / "devices/system/cpu";
    EXPECT_GE(machineFacts(sys.path()).performanceCores, 1) << "of this machine, where nothing is told";
    for (int i = 0; i < 6; ++i) {
        const auto processor = processors / ("cpu" + std::to_string(i));
        put(processor / "topology/thread_siblings_list", i < 4 ? std::to_string(i / 2) + "-x\n" : std::to_string(i));
        put(processor / "cpu_capacity", i < 4 ? "1024\n" : "400\n");
    }
    put(processors / "cpufreq/topology/thread_siblings_list", "no processor");
    EXPECT_EQ(machineFacts(sys.path()).performanceCores, 2);
}

TEST(LinuxMachine, PowerComesFromTheMainsOrABattery) {
    const TemporaryFolder sys;
    const auto supplies = sys.path() / "class/power_supply";
    EXPECT_TRUE(machineFacts(sys.path()).isOnACPower) << "no battery at all";
    put(supplies / "mouse/type", "Battery\n");
    put(supplies / "mouse/scope", "Device\n");
    EXPECT_TRUE(machineFacts(sys.path()).isOnACPower);
    put(supplies / "BAT0/type", "Battery\n");
    put(supplies / "AC/type", "Mains\n");
    put(supplies / "AC/online", "0\n");
    EXPECT_FALSE(machineFacts(sys.path()).isOnACPower);
    put(supplies / "AC/online", "1\n");
    EXPECT_TRUE(machineFacts(sys.path()).isOnACPower);
}

} // namespace
} // namespace morvelin
