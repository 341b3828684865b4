#include "ui/about_box.h"

#include <QDialog>
#include <QFrame>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

#include "ui/artwork.h"
#include "ui/main_window.h"

#ifndef VARNOTH_VERSION
#define VARNOTH_VERSION "6.0"
#endif

namespace varnoth::ui {

QDialog* make_about_box(QWidget* parent) {
  auto* box = new QDialog(parent);
  box->setObjectName(QStringLiteral("frmAbout"));
  box->setWindowTitle(QStringLiteral("About ") + QString::fromLatin1(kAppTitle));
  box->setModal(true);

  auto* picture = new QLabel(box);
  picture->setObjectName(QStringLiteral("picIcon"));
  picture->setPixmap(helix_picture(QSize(96, 64)));

  auto* title = new QLabel(QString::fromLatin1(kAppTitle), box);
  title->setObjectName(QStringLiteral("lblTitle"));
  QFont big = title->font();
  big.setPointSizeF(big.pointSizeF() * 1.8);
  big.setBold(true);
  title->setFont(big);

  auto* version = new QLabel(QStringLiteral("Version " VARNOTH_VERSION), box);
  version->setObjectName(QStringLiteral("lblVersion"));

  auto* description = new QLabel(
      QStringLiteral("Divergence of aligned nucleotide sequences: synonymous and "
                     "nonsynonymous substitutions (Ks, Ka) in coding regions, substitutions "
                     "per site (K) in noncoding regions, and confidence intervals by Monte "
                     "Carlo simulation.\n\nTo cite this program, give its name and version: "
                     "Varnoth v" VARNOTH_VERSION "."),
      box);
  description->setObjectName(QStringLiteral("lblDescription"));
  description->setWordWrap(true);

  auto* line = new QFrame(box);
  line->setFrameShape(QFrame::HLine);
  line->setFrameShadow(QFrame::Sunken);

  auto* ok = new QPushButton(QStringLiteral("OK"), box);
  ok->setObjectName(QStringLiteral("cmdOK"));
  ok->setDefault(true);
  QObject::connect(ok, &QPushButton::clicked, box, &QDialog::accept);

  auto* head = new QHBoxLayout;
  head->addWidget(picture, 0, Qt::AlignTop);
  auto* words = new QVBoxLayout;
  words->addWidget(title);
  words->addWidget(version);
  words->addSpacing(8);
  words->addWidget(description);
  head->addLayout(words, 1);

  auto* buttons = new QHBoxLayout;
  buttons->addStretch(1);
  buttons->addWidget(ok);

  auto* layout = new QVBoxLayout(box);
  layout->addLayout(head);
  layout->addWidget(line);
  layout->addLayout(buttons);
  box->resize(460, 240);
  return box;
}

}  // namespace varnoth::ui
