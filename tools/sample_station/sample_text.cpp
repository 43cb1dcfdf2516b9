#include "sample_text.h"

#include <array>

namespace orvane::sample {

using namespace Qt::StringLiterals;

namespace {

constexpr std::array kTitles{
    u"关于进一步做好文书档案整理与数字化工作的通知", u"关于开展年度档案安全检查的通知",
    u"关于调整档案库房温湿度控制标准的请示", u"关于召开全市档案工作座谈会的函",
    u"关于印发《纸质档案扫描操作规程》的通知"};

constexpr std::array kHeadings{u"总体要求",   u"工作任务", u"时间安排", u"质量要求",
                               u"安全与保密", u"组织保障", u"成果验收", u"其他事项"};

constexpr std::array kSentences{
    u"各单位应当在本年度第三季度末完成上一年度文件材料的收集、整理和归档工作，做到应归尽归、应收尽"
    u"收。",
    u"扫描前应对案卷进行清点登记，拆除装订物，对破损、褶皱的页面先行修裱，并逐页编写页号。",
    u"扫描分辨率一般不低于300dpi，文字偏小、密集或清晰度较差的，可适当提高分辨率。",
    u"图像应当端正、清晰、完整，不得有明显的黑边、倾斜和漏页现象。",
    u"彩色页面、照片和红头文件采用彩色模式扫描，其余页面可以采用黑白二值模式。",
    u"档案出库、入库应当双人清点、当面交接，交接清单一式两份，由双方签字后各存一份。",
    u"数据挂接完成后，按照不低于5%的比例随机抽检，差错率超过千分之一的，整批退回返工。",
    u"承担加工任务的人员须签订保密协议，不得将档案原件和数字化成果带离工作场所。",
    u"库房温度应控制在摄氏14度至24度之间，相对湿度控制在45%至60%之间，每日记录两次。",
    u"成果数据应当制作三套备份，其中一套异地保存，每两年进行一次可读性检查。",
    u"经研究，同意你单位关于更新密集架的请示，所需经费从年度专项预算中列支。",
    u"请于6月30日前将自查报告报送办公室，联系电话：8360-2715，联系人：周敏、陈立新。",
    u"卷内文件按照问题结合时间排列，正文在前、附件在后，印件在前、定稿在后。",
    u"对不具备开放条件的档案，应当在目录中予以标注，并按规定履行审批手续。",
    u"会议听取了三年来工作进展情况的汇报，肯定了成绩，也指出了存在的主要问题和薄弱环节。",
    u"参加验收的人员由业务、技术和档案管理三方面组成，验收意见应当写明日期并由全体成员签名。"};

constexpr std::array kAuthors{u"市档案局", u"办公室", u"人事处", u"财务科", u"基建办", u"信息中心"};

constexpr std::array kRegisterTitles{u"关于下达2023年度工作计划的通知",
                                     u"年度财务决算报告及附表",
                                     u"办公楼维修工程验收意见书",
                                     u"关于王建国等同志职务任免的批复",
                                     u"设备采购合同（含附件三份）",
                                     u"三季度安全生产检查情况通报",
                                     u"关于举办业务培训班的通知",
                                     u"库房密集架安装图纸",
                                     u"年度考核结果备案表",
                                     u"接待来访登记及答复"};

constexpr std::array kCaptions{u"图1　库区北侧远眺（2023年10月摄）", u"图2　雁湖水源地现状照片",
                               u"图3　旧馆址后山全景"};

template <std::size_t N>
QString anyOf(const std::array<const char16_t*, N>& texts, Noise& noise) {
  return QString::fromUtf16(texts[noise.below(N)]);
}

QString twoDigits(std::size_t value) {
  return QString::number(value).rightJustified(2, u'0');
}

}  // namespace

QString noticeTitle(Noise& noise) {
  return anyOf(kTitles, noise);
}

QString documentNumber(Noise& noise) {
  return u"档发〔2023〕"_s + QString::number(1 + noise.below(120)) + u"号"_s;
}

QString sectionHeading(int number, Noise& noise) {
  static const QString kNumerals = u"一二三四五六七八九"_s;
  return u"　　"_s + QString(kNumerals[(number - 1) % kNumerals.size()]) + u"、"_s +
         anyOf(kHeadings, noise);
}

QString paragraph(int sentences, Noise& noise) {
  QString text = u"　　"_s;
  std::size_t at = noise.below(kSentences.size());
  for (int i = 0; i < sentences; ++i) {
    text += QString::fromUtf16(kSentences[at]);
    at = (at + 5) % kSentences.size();  // visits every sentence before it repeats one
  }
  return text;
}

QString photoCaption(Noise& noise) {
  return anyOf(kCaptions, noise);
}

QStringList registerRow(int number, Noise& noise) {
  const auto pages = 1 + noise.below(28);
  return {QString::number(number),
          u"档发"_s + QString::number(10 + noise.below(190)) + u"号"_s,
          anyOf(kAuthors, noise),
          anyOf(kRegisterTitles, noise),
          u"2023"_s + twoDigits(1 + noise.below(12)) + twoDigits(1 + noise.below(28)),
          QString::number(pages),
          noise.below(6) == 0 ? u"复印件"_s : QString()};
}

}  // namespace orvane::sample
