// What the core and the drivers say, in Chinese.
#include "ui/text/InterfaceTexts.h"

namespace {

constexpr WordRow kWords[] = {
    // Job status.
    {"Queued", "排队中"},
    {"Waiting", "等待中"},
    {"Running", "运行中"},
    {"Finished", "已完成"},
    {"Aborted", "已中止"},

    // Lines of the log and reasons of aborted jobs.
    {"Solver [%s] does not exist", "求解器 [%s] 不存在"},
    {"Job file [%s] does not exist", "任务文件 [%s] 不存在"},
    {"Job restart file [%s] does not exist", "重启动文件 [%s] 不存在"},
    {"File [%s] does not exist", "文件 [%s] 不存在"},
    {"File name [%s] cannot be written on a command line", "文件名 [%s] 不能写入命令行"},
    {"Folder [%s] cannot be entered", "无法进入文件夹 [%s]"},
    {"No message file been generated when run job [%s]", "运行任务 [%s] 时没有生成消息文件"},
    {"Job [%s] did not end normally: its message file has no line of normal termination",
     "任务 [%s] 未正常结束：其消息文件中没有正常终止行"},
    {"Job [%s] did not end normally: its output [%s] cannot be read",
     "任务 [%s] 未正常结束：无法读取其输出 [%s]"},
    {"Job [%s] did not end normally: its message file cannot be read",
     "任务 [%s] 未正常结束：无法读取其消息文件"},
    {"Job [%s] did not end normally: the solver reports an error termination",
     "任务 [%s] 未正常结束：求解器报告出错终止"},
    {"Job [%s] did not end normally: its output has no total time",
     "任务 [%s] 未正常结束：其输出中没有总时间"},
    {"Job [%s] did not end normally: there is no result in [%s]",
     "任务 [%s] 未正常结束：[%s] 中没有结果"},
    {"Job [%s] did not end normally: ", "任务 [%s] 未正常结束："},
    {"Run job [%s] failed: ", "运行任务 [%s] 失败："},
    {"Remove old message file [%s] failed", "删除旧的消息文件 [%s] 失败"},
    {"Remove old OUT file [%s] failed", "删除旧的 OUT 文件 [%s] 失败"},
    {"Remove old LIN file [%s] failed", "删除旧的 LIN 文件 [%s] 失败"},
    {"Rename message file [%s] failed", "重命名消息文件 [%s] 失败"},
    {"Remove adapt dump file [%s] failed", "删除 adaptdmp 文件 [%s] 失败"},
    {"Prepare deck [%s] failed, it stays as it was", "处理关键字文件 [%s] 失败，文件保持原样"},
    {"Prepare deck [%s] failed, the old deck is [%s]", "处理关键字文件 [%s] 失败，原文件为 [%s]"},
    {"Add stage [%s] failed: its job is not Queued any more",
     "添加工步 [%s] 失败：其任务已不在排队"},
    {"Job [%s] waits for the positioning library, which another job uses",
     "任务 [%s] 正在等待被另一任务占用的定位库"},
    {"LS-DYNA version is below R7.0.0 for the job [%s]  ", "任务 [%s] 的 LS-DYNA 版本低于 R7.0.0"},
    {"Auto Position [%s] open write dyna file failed", "自动定位 [%s]：无法写入 dyna 文件"},
    {"No access token for the INC solver: set inc_token in the section SOLVER of the settings file",
     "没有 INC 求解器的访问令牌：请在设置文件的 SOLVER 节中设置 inc_token"},
    {"Positioning library [%s] cannot be used (it does not exist): jobs run without automatic "
     "positioning",
     "无法使用定位库 [%s]（不存在）：任务将在没有自动定位的情况下运行"},
    {"Read file [%s] failed", "读取文件 [%s] 失败"},
    {"Write file [%s] failed", "写入文件 [%s] 失败"},
    {"Directory [%s] is not writable", "文件夹 [%s] 不可写"},
    {"Write tmp file [%s] failed", "写入任务传递文件 [%s] 失败"},
    {"Read settings file [%s] failed", "读取设置文件 [%s] 失败"},
    {"Read group file [%s] failed", "读取任务组文件 [%s] 失败"},
    {"Read host file [%s] failed", "读取主机文件 [%s] 失败"},
    {"Write settings file [%s] failed", "写入设置文件 [%s] 失败"},
    {"Write group file [%s] failed", "写入任务组文件 [%s] 失败"},
    {"Write host file [%s] failed", "写入主机文件 [%s] 失败"},
    {"View text file [%s] failed", "查看文本文件 [%s] 失败"},
    {"Run post-processor [%s] failed", "运行后处理器 [%s] 失败"},
    {"Not find running job, stop running job failed", "没有正在运行的任务，无法停止"},
    {"Job data error or job file is empty", "任务数据错误或任务文件为空"},
    {"BG_SWITCH file [%s] does not exist", "BG_SWITCH 文件 [%s] 不存在"},
};

}  // namespace

std::span<const WordRow> ChineseWords() {
  return kWords;
}
