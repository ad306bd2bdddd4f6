// SPDX-License-Identifier: MIT
#include "aMAIN.h"

#include "app/mINIT_MODULO.h"
#include "common/Conversions.h"
#include "common/RuntimeError.h"
#include "form/frm_Commissioni.h"
#include "host/Services.h"

#include <QPointer>

namespace xv::app {

namespace {

QPointer<QWidget> g_form;

} // namespace

QWidget* programForm()
{
    return g_form;
}

void releaseProgramForm()
{
    delete g_form.data();
    g_form = nullptr;
}

void Main()
{
    try {
        QWidget* form = new form::frm_Commissioni();
        g_form = form;
        if (!InitModulo(form, false, true, false))
            return;
        g_form = form;

        const QString phase =
            host::formSettings().GetSetting(QStringLiteral("frmCommissioni"), QStringLiteral("Fase"),
                                            QStringLiteral("0"));
        const quint8 fase = common::toByte(common::toInt16(phase));
        auto* orders = qobject_cast<form::frm_Commissioni*>(form);
        if (!orders)
            throw common::RuntimeError(common::ErrorNumber::TypeMismatch,
                                       QStringLiteral("La finestra restituita non è la maschera delle commissioni"));
        orders->InitForm(fase);
    } catch (...) {
        host::host().ReportError(QStringLiteral("aMAIN.Main"), QString(), true);
    }
}

} // namespace xv::app
