#pragma once

#include <QString>

/// The scripts that read a server's load. Each runs in the shell of the account that is logged in.
namespace MetricScripts
{

/// One number, percent: of mpstat(1) over a second, of /proc/stat over a tenth of one, or the sum of the shares
/// of all processes, which may be above 100. The second way goes through two fixed files.
inline QString cpuUsage()
{
    return QStringLiteral(R"sh(# Simple and reliable CPU usage
if command -v mpstat >/dev/null 2>&1; then
    # Use mpstat with minimal delay for near-instant reading
    mpstat 1 1 | tail -1 | awk '{print 100 - $NF}'
elif [ -f /proc/stat ]; then
    # Simplified /proc/stat approach
    awk '/^cpu / {
        for(i=2;i<=8;i++) total+=$i;
        idle=$5;
        print total "|" idle
    }' /proc/stat > /tmp/.cpu1 &&     sleep 0.1 &&     awk '/^cpu / {
        for(i=2;i<=8;i++) total+=$i;
        idle=$5;
        print total "|" idle
    }' /proc/stat > /tmp/.cpu2 &&     awk -F"|" 'NR==FNR{t1=$1;i1=$2;next} {
        tdiff=$1-t1; idiff=$2-i1;
        if(tdiff>0) printf "%.1f\n", 100*(1-idiff/tdiff);
        else print "0.0"
    }' /tmp/.cpu1 /tmp/.cpu2 &&     rm -f /tmp/.cpu1 /tmp/.cpu2
else
    # Fallback to ps
    ps aux | awk 'NR>1 {sum+=$3} END {printf "%.1f\n", sum}'
fi)sh");
}

/// One line a block device that was ever read: name|sectors read|sectors written, of /proc/diskstats.
inline QString diskIO()
{
    return QStringLiteral(R"sh(if [ -f /proc/diskstats ]; then
    # Read from /proc/diskstats - columns: device major minor name reads-completed reads-merged sectors-read time-reading writes-completed writes-merged sectors-written time-writing
    awk '$3 !~ /^loop/ && $4 != 0 {print $3 "|" $6 "|" $10}' /proc/diskstats
else
    # Fallback for non-Linux systems or systems without /proc/diskstats
    echo "disk0|0|0"
fi)sh");
}

/// One line an interface, of /proc/net/dev or of netstat(8): name|received bytes|packets|errors|transmitted
/// bytes|packets|errors.
inline QString networkInterfaces()
{
    return QStringLiteral(R"sh(if [ -f /proc/net/dev ]; then
    cat /proc/net/dev | awk 'NR>2 {gsub(":", "", $1); print $1 "|" $2 "|" $3 "|" $4 "|" $10 "|" $11 "|" $12}'
else
    netstat -i | awk 'NR>2 && $1!="lo" {print $1 "|" $5 "|" $6 "|" $7 "|" $8 "|" $9 "|" $10}'
fi)sh");
}

/// What each vendor's own tool prints, in a frame of marks, for GPUMetricsParser.
inline QString gpus()
{
    return QStringLiteral(R"sh(echo "MIXED_VENDOR_START"

# Check for NVIDIA GPUs
if command -v nvidia-smi >/dev/null 2>&1; then
    echo "VENDOR:NVIDIA"
    nvidia-smi --query-gpu=index,name,temperature.gpu,utilization.gpu,memory.total,memory.used,memory.free,power.draw,power.limit,fan.speed,clocks.current.graphics,clocks.current.memory --format=csv,noheader 2>/dev/null || echo "ERROR"
    echo "VENDOR_END"
fi

# Check for AMD GPUs
if command -v amd-smi >/dev/null 2>&1; then
    echo "VENDOR:AMD"
    amd-smi metric --json 2>/dev/null || echo "ERROR"
    echo "VENDOR_END"
elif command -v rocm-smi >/dev/null 2>&1; then
    echo "VENDOR:AMD_LEGACY"
    # rocm-smi JSON output requires specific flags, not the concise view
    rocm-smi --showtemp --showuse --showmeminfo vram --showpower --json 2>/dev/null || rocm-smi --showhw --showtemp 2>/dev/null || echo "ERROR"
    echo "VENDOR_END"
fi

# Check for Intel GPUs
if command -v intel_gpu_top >/dev/null 2>&1; then
    echo "VENDOR:INTEL"
    sudo intel_gpu_top -J -d -m -e -c -t 2>/dev/null || echo "ERROR"
    echo "VENDOR_END"
fi

echo "MIXED_VENDOR_END")sh");
}

} // namespace MetricScripts
