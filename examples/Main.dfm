object MainForm: TMainForm
  Left = 192
  Top = 114
  Width = 544
  Height = 375
  Caption = 'Пример проекта'
  Color = clBtnFace
  Font.Charset = RUSSIAN_CHARSET
  Font.Color = clWindowText
  Font.Height = -11
  Font.Name = 'MS Sans Serif'
  Font.Style = []
  Menu = MainMenu
  OldCreateOrder = False
  Position = poScreenCenter
  OnCreate = FormCreate
  PixelsPerInch = 96
  TextHeight = 13
  object TopPanel: TPanel
    Left = 0
    Top = 0
    Width = 536
    Height = 41
    Align = alTop
    BevelOuter = bvNone
    TabOrder = 0
    object CaptionLabel: TLabel
      Left = 8
      Top = 14
      Width = 25
      Height = 13
      Caption = 'Имя:'
    end
    object NameEdit: TEdit
      Left = 48
      Top = 10
      Width = 217
      Height = 21
      TabOrder = 0
    end
    object OkButton: TButton
      Left = 280
      Top = 8
      Width = 75
      Height = 25
      Caption = 'OK'
      Default = True
      TabOrder = 1
      OnClick = OkButtonClick
    end
    object SettingsButton: TButton
      Left = 368
      Top = 8
      Width = 89
      Height = 25
      Caption = 'Настройки...'
      TabOrder = 2
      OnClick = SettingsButtonClick
    end
  end
  object NotesMemo: TMemo
    Left = 0
    Top = 41
    Width = 536
    Height = 199
    Align = alClient
    Lines.Strings = (
      'Первая строка'
      'Second line')
    ScrollBars = ssVertical
    TabOrder = 1
  end
  object StatusBar: TStatusBar
    Left = 0
    Top = 310
    Width = 536
    Height = 19
    Panels = <>
    SimplePanel = True
  end
  inline InfoFrame1: TInfoFrame
    Left = 0
    Top = 240
    Width = 536
    Height = 70
    Align = alBottom
    TabOrder = 2
    inherited TitleLabel: TLabel
      Caption = 'Сведения о файле'
    end
  end
  object MainMenu: TMainMenu
    Left = 472
    Top = 56
    object FileMenu: TMenuItem
      Caption = '&Файл'
      object FileOpenItem: TMenuItem
        Action = OpenAction
      end
      object FileExitItem: TMenuItem
        Action = ExitAction
      end
    end
  end
  object ActionList: TActionList
    Left = 472
    Top = 96
    object OpenAction: TAction
      Category = 'File'
      Caption = '&Открыть...'
      ShortCut = 16463
      OnExecute = OpenActionExecute
    end
    object ExitAction: TAction
      Category = 'File'
      Caption = 'В&ыход'
      OnExecute = ExitActionExecute
    end
  end
end
