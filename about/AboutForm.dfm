object AboutForm: TAboutForm
  Caption = 'About Zelvane'
  ClientWidth = 360
  ClientHeight = 176
  object ProductLabel: TLabel
    Left = 24
    Top = 20
    Width = 312
    Height = 24
    Caption = 'Zelvane Wizard Pack'
  end
  object VersionLabel: TLabel
    Left = 24
    Top = 48
    Width = 312
    Height = 18
    Caption = 'Version 1.0'
  end
  object DescriptionLabel: TLabel
    Left = 24
    Top = 76
    Width = 312
    Height = 18
    Caption = 'Experts for Delphi and C++Builder projects'
  end
  object CopyrightLabel: TLabel
    Left = 24
    Top = 100
    Width = 312
    Height = 18
    Caption = 'Copyright '#169' 2026 the Zelvane developers'
  end
  object OKButton: TButton
    Left = 260
    Top = 136
    Width = 80
    Height = 26
    Caption = 'OK'
    ModalResult = 1
    Default = True
  end
end
