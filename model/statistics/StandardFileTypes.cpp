// The eighteen groups that the program starts with, and the groups in use.

#include "model/statistics/FileTypeGroups.h"
#include "platform/threads/CriticalSection.h"

namespace Vantrel {

namespace {

struct TStandardGroup {
  std::u16string_view fCaption;
  std::u16string_view fDescription;
  std::u16string_view fExtensionForIcon;
  std::u16string_view fPatterns;
};

// Never change these texts, not even the odd masks ("*ascx", "*mbox", a doubled "*.~*") and the trailing ";". The
// program compares the user's saved lists with them to see whether they were changed. A copy is in
// tests/model/statistics/standard_file_types.txt.
constexpr TStandardGroup kStandardGroups[] = {
    {u"Audio", u"Files containing music, sounds or playlists", u"*.wav",
     u"*.aac;*.ac3;*.aif;*.aiff;*.au;*.aup;*.a52;*.dts;*.flac;*.itdb;*.itl;*.mka;*.mp1;*.mp2;*.mp3;*.mpa;*.m3u;"
     u"*.m4a;*.m4b;*.m4r;*.mid;*.midi;*.nra;*.ogg;*.rm;*.sfap*;*.spx;*.wav;*.wma;*.wpk;*.wpl;*.wmdb;"},
    {u"Videos", u"Files containing videos or animations", u"*.avi",
     u"*.3gp;*.ape;*.avi;*.asf;*.wmv;*.divx;*.dv;*.fla;*.flv;*.idx;*.ifo;*.m1v;*.m2ts;*.m2v;*.m4v;*.mkv;*.mov;"
     u"*.mp4;*.mpeg;*.mpg;*.mpeg1;*.mpeg2;*.mpeg4;*.mpv;*.mts;*.ogm;*.ra;*.snd;*.srt;*.sub;*.swc;*.swf;*.ts;"
     u"*.vob;*.webm;"},
    {u"Images", u"Files containing pictures, images or mouse cursors", u"*.bmp",
     u"*.ai;*.ani;*.arw;*.avif;*.b3d;*.bmp;*.dib;*.cam;*.cdr;*.clp;*.crw;*.cr2;*.cr3;*.cur;*.dcm;*.dcx;*.dds;"
     u"*.djvu;*.dng;*.dwg;*.iw44;*.ecw;*.emd;*.emf;*.eps;*.fh6;*.fh7;*.fh8;*.fh9;*.fh10;*.fh11;*.fpx;*.fsh;*.g3;"
     u"*.gif;*.heic;*.heif;*.icl;*.ico;*.iff;*.indd;*.jp2;*.jpc;*.j2k;*.jpg;*.jpeg;*.jpe;*.jpm;*.jxl;*.kdc;"
     u"*.k25;*.lwf;*.mef;*.mng;*.mos;*.mrw;*.nef;*.nlm;*.nol;*.ngg;*.orf;*.pbm;*.pcd;*.pcx;*.pef;*.pdn;*.pgm;"
     u"*.png;*.pnx;*.ppm;*.ps;*.psd;*.psp;*.pspimage;*.qtif;*.raf;*.ras;*.raw;*.sff;*.skm;*.sgi;*.srf;*.sr2;"
     u"*.svg;*.tga;*.tif;*.tiff;*.ufo;*.webp;*.wbmp;*.wmf;*.xbm;*.xpm;"},
    {u"Application", u"Program Files, Libraries and other compiled resources", u"*.exe",
     u"*.bpl;*.bat;*.class;*.com;*.cmd;*.dll*;*.exe;*.itxib;*.jar;*.lnk;*.mo;*.*manifest;*.mui;*.msc;*.pm;*.ocx;"
     u"*.rll;*.scr;*.so;*.vbx;*.x86;*.xpt;*.8bf;"},
    {u"Container", u"Compressed Archives and disk images", u"*.zip",
     u"*.7z;*.7zip;*.ace;*.arc;*.arj;*.b64;*.bkf;*.bz2;*.bza;*.c2d;*.cab;*.cdi;*.cpio;*.deb;*.dmg;*.enc;*.gca;"
     u"*.gho;*.gz;*.gza;*.ha;*.img;*.imz;*.iso;*.ize;*.lha;*.lzh;*.nrg;*.pak;*.pdi;*.pk3;*.rar;*.rpm;*.sit;"
     u"*.tar;*.tbz;*.tgz;*.tz;*.uue;*.v2i;*.wim;*.z;*.zip;"},
    {u"Software Development", u"Source and project files of software development projects", u"",
     u"*.*proj;*.a;*.ahk;*.asm;*.bml;*.bdsgroup;*.bpg;*.bpi;*.bpk;*.bpr;*.c;*.cbl;*.cpp;*.cs;*.cvs*;*.*dbg;"
     u"*.dcp*;*.dcr;*.dcu*;*.def;*.dess;*.dfm;*.dof;*.dpk;*.dpr;*.drc;*.dtd;*.elf;*.exp;*.fmx;*.frm;*.h;*.hpp;"
     u"*.hmx;*.hmxp;*.?\?html;*.idl;*.inc;*.inl;*.ise;*.ism;*.iss;*.java;*.json;*.jsl;*.lib;*.lic;*.lpk;*.mak;"
     u"*.mk;*.map;*.mds;*.ncp;*.nrmap;*.o;*.obj;*.pas;*.pch;*.pdb;*.pfx;*.pl;*.ps1*;*.py;*.rc;*.rc2;*.rdl;*.res;"
     u"*.resx;*.resources;*.rgs;*.scs;*.shfb;*.sln;*.snippet;*.src;*.suo;*.svn*;*.swd;*.swt;*.targets;*.tcLLP;"
     u"*.tcScript;*.tcl;*.trx;*.tlb;*.tt;*.vb;*.vbp;*.vbs;*.vbw;*.vsp;*.vsprops;*.vssettings;*.vstemplate;"
     u"*.wsdl;*.wxl;*.wxs;*.xaml;*.xdr;*.xfm;*.xsd;*.xsl;"},
    {u"Virtualization", u"Files of Virtual PC, VMware, etc.", u"*.vhd",
     u"*.vfd;*.*vhd*;*.vsv;*.vud;*.vmdk;*.vmem;*.vmss;*.vmx;*.vmsn;"},
    {u"Office", u"Documents and files of office programs and PDFs", u"*.doc",
     u"*.123;*.book;*.dic;*.doc;*.doc?;*.dot;*.dot?;*.fm;*.frx;*.lex;*.lwp;*.mde;*.mdt;*.mpp;*.mwp;*.nk2;*.odp;"
     u"*.odt;*.odm;*.one*;*.pdf;*.pip;*.pot;*.potx;*.pps;*.ppt;*.ppt?;*.pwi;*.pub;*.rtf;*.sam;*.thmx;*.vdx;"
     u"*.vsd;*.vsdx;*.vss;*.vst;*.vsx;*.wk?;*.xla;*.xlam;*.xlk;*.xls;*.xls?;*.xlt;*.xlt?;"},
    {u"System", u"System Files", u"*.sys",
     u"*.admx;*.afm;*.adm;*.ax;*.cat;*.cdf-ms;*.cer;*.cpl;*.drv;*.dxt;*.esd;*.evt;*.evtx;*.gpd;*.fon;*.icm;"
     u"*.inf;*.inf_loc;*.isp;*.man;*.mmm;*.mof;*.msi;*.msm;*.msp;*.msu;*.mum;*.nlp;*.nls;*.otf;*.pfb;*.pfm;"
     u"*.pnf;*.ptxml;*.rdp;*.rbf;*.spc;*.sys;*.theme;*.ttf;*.ttc;*.vxd;*.wer"},
    {u"Database", u"Files containing the data of client and server databases", u"*.mdb",
     u"*.acc?\?;*.db;*.dbf;*.fdb;*.ib;*.ldb;*.ldf;*.mdb;*.mdf;*.pdx;*.sdf;*.sql;*.sqlite;"},
    {u"Temporary", u"Temporary files and backup copies containing previous version of current files", u"*.tmp",
     u"*.bak;*.cache;*.chk;*.dmp;*.err;*.old;*.tmp;*.~*;*.$$$;*.---;*.~*;*.?\?~;"},
    {u"Text", u"Plain text files, log files", u"*.txt", u"*.asc;*.latex;*.log;*.nfo;*.tex;*.txt;*.1st;*.csv;*.xml;"},
    {u"Help", u"Files of the Windows help system", u"*.chm", u"*.aw;*.chm;*.cnt;*.hlp;*.hx?;*.gid;*.toc;"},
    {u"Internet", u"Files related to the WWW, like HTML files", u"*.html",
     u"*ascx;*.asmx;*.asp;*.aspx;*.cfm;*.cgi;*.css;*.htacces;*.htpassword;*.htm;*.html;*.htt;*.js;*.mht;*.php;"
     u"*.php?;*.shtml;*.url;"},
    {u"Configuration", u"Files containing configuration settings", u"",
     u"*.cf;*.cfg;*.csf;*.conf;*.config;*.icc;*.ini;*.properties;*.reg;*.setting*;*.udl;"},
    {u"Mail", u"Email messages and files of email clients", u"*.msg",
     u"*.0tx;*.edb;*.eml*;*mbox;*.msg;*.nsf;*.ntf;*.ndk;*.pst;*.oft;*.olk*;*.ost;*.rwz;*.vcf;*.wab;"},
    {u"MacOS", u"Files which are typically used on MacOS system", u"",
     u"*._*;*.DS_Store;*.Spotlight-V100;*.apDisk;*.icns;*.fseventsd;*.Trash;*.Trashes;*.TemporaryItems;"},
    {u"Miscellaneous Files", u"Unknown file types", u"", u"*"},
};

}  // namespace

TStandardFileTypes::TStandardFileTypes() {
  for (const TStandardGroup& standard : kStandardGroups) {
    TRef<IFileTypeGroup> group = AddNewGroup();
    group->SetCaption(standard.fCaption);
    group->SetDescription(standard.fDescription);
    group->SetExtensionForIcon(standard.fExtensionForIcon);
    group->SetPatterns(standard.fPatterns);
  }
}

TRef<const IFileTypeGroups> StandardFileTypes() {
  static const TRef<const IFileTypeGroups> groups = MakeRef<TStandardFileTypes>();
  return groups;
}

namespace {

TCriticalSection gCommonLock;
TRef<const IFileTypeGroups> gCommonGroups GUARDED_BY(gCommonLock);  // nullptr: the standard ones

}  // namespace

TRef<const IFileTypeGroups> CommonFileTypeGroups() {
  TCriticalSectionLock lock(gCommonLock);
  return gCommonGroups ? gCommonGroups : StandardFileTypes();
}

void SetCommonFileTypeGroups(TRef<const IFileTypeGroups> pGroups) {
  TCriticalSectionLock lock(gCommonLock);
  gCommonGroups.swap(pGroups);
}

}  // namespace Vantrel
