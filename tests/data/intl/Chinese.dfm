object ChineseForm: TChineseForm
  Left = 200
  Top = 120
  Width = 360
  Height = 200
  Caption = '设置'
  Color = clBtnFace
  Font.Charset = GB2312_CHARSET
  Font.Color = clWindowText
  Font.Height = -11
  Font.Name = 'MS Sans Serif'
  Font.Style = []
  OldCreateOrder = False
  PixelsPerInch = 96
  TextHeight = 13
  object FontLabel: TLabel
    Left = 8
    Top = 8
    Width = 60
    Height = 13
    Caption = '字体'
    Font.Charset = GB2312_CHARSET
    Font.Color = clWindowText
    Font.Height = -12
    Font.Name = '宋体'
    Font.Style = []
    ParentFont = False
  end
  object NameLabel: TLabel
    Left = 8
    Top = 30
    Width = 120
    Height = 13
    Caption = #20013#25991#21517#31216
  end
  object SizeBox: TComboBox
    Left = 8
    Top = 52
    Width = 145
    Height = 21
    ItemHeight = 13
    TabOrder = 0
    Text = '大小'
    Items.Strings = (
      '大'
      '小')
  end
  object OkButton: TButton
    Left = 8
    Top = 84
    Width = 75
    Height = 25
    Caption = '确定'
    TabOrder = 1
  end
end
