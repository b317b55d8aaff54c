object PortugueseForm: TPortugueseForm
  Left = 200
  Top = 120
  Width = 360
  Height = 220
  Caption = 'Configurações'
  Color = clBtnFace
  Font.Charset = ANSI_CHARSET
  Font.Color = clWindowText
  Font.Height = -11
  Font.Name = 'MS Sans Serif'
  Font.Style = []
  OldCreateOrder = False
  PixelsPerInch = 96
  TextHeight = 13
  object OptionsLabel: TLabel
    Left = 8
    Top = 8
    Width = 120
    Height = 13
    Caption = 'Opções de impressão'
  end
  object MessageEdit: TEdit
    Left = 8
    Top = 28
    Width = 240
    Height = 21
    TabOrder = 0
    Text = 'N'#227'o '#233' poss'#237'vel '#8212' tente de novo'
  end
  object ChoiceList: TListBox
    Left = 8
    Top = 56
    Width = 240
    Height = 60
    Items.Strings = (
      'Impressão'
      'Configura'#231#245'es '#8801)
    TabOrder = 1
  end
  object SaveButton: TButton
    Left = 8
    Top = 124
    Width = 100
    Height = 25
    Caption = 'Salvar alterações'
    TabOrder = 2
  end
end
